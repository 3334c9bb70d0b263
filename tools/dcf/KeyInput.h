#pragma once
// Where the keys of dcf come from: a password from a file, standard input or the terminal, a
// private key file, a recipient's public key text. Every failure ends the command with a
// message that says what to give instead.

#include <CLI/CLI.hpp>

#include <string>

#include "archive/Archive.h"

namespace dcftool {

struct KeyOptions {
    std::string passwordFile;
    bool passwordStdin = false;
    std::string keyFile;
};

// --password-file, --password-stdin and --key, of which one at most is given.
void AddKeyOptions(CLI::App& command, KeyOptions& options);

// Fills the password or the private key of `request`. Without an option the password is asked
// on the terminal without echo; with no terminal either, the command ends as a usage error.
void LoadKeys(const std::string& command, const std::string& archive, const KeyOptions& options,
              ArchiveExtractRequest& request);

struct NewPasswordOptions {
    std::string passwordFile;
    bool passwordStdin = false;
    bool noPassword = false;
};

// The password of a new archive: from the file or standard input, or typed twice on the
// terminal. Refuses an empty one and one longer than the format holds; warns about characters
// that the format cuts to their low byte, and about a typed password that is easy to guess.
// `recipient`: the archive is sealed for a key too.
void LoadNewPassword(const std::string& command, const std::string& archive,
                     const NewPasswordOptions& options, bool recipient,
                     ArchiveWriteRequest& request);

// Seals the new archive also for the public key text at `path`.
void LoadRecipient(const std::string& command, const std::string& path,
                   ArchiveWriteRequest& request);

}  // namespace dcftool
