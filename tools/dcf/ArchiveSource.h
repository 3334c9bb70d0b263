#pragma once
// What the archive commands of dcf share: finding the DCF image in a plain or self-extracting
// file, and the options that open its key block.

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>

#include "Common/Common/SecureBuffer.h"

#include "archive/ArchiveExtractRequest.h"
#include "platform/File.h"

namespace dcf {

// An archive file with its stream at the first byte of the DCF image.
struct ImageSource {
    platform::File stream;
    bool selfExtracting = false;  // the image was found through the trailer
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

// Opens `path`: a self-extracting file when its last 1024 bytes are a trailer, whatever its
// name, else a plain image from the first byte. Ends the command when the file can't be read.
ImageSource OpenImage(const std::string& command, const std::string& path);

// The absolute form of a path argument, without "." and ".." and with links resolved as far as
// it exists.
std::u16string CanonicalPath(const std::string& argument);

struct KeyOptions {
    std::string passwordFile;
    bool passwordStdin = false;
    std::string keyFile;
};

// Where passwords are read: the longest line taken; a longer one is refused.
inline constexpr std::size_t kLongestPasswordLine = 1024;

// The first line of a UTF-8 file; ends the command when the file can't be read or the line is
// longer than kLongestPasswordLine.
Zelmarik::SecureU16String ReadPasswordFile(const std::string& command, const std::string& path);
// One line of standard input or the terminal, without echo: `prompt` is shown first when it is
// not empty. Nothing when the input ended or Ctrl-C was pressed; ends the command for a line
// longer than kLongestPasswordLine.
std::optional<Zelmarik::SecureU16String> ReadPasswordLine(const std::string& command,
                                                          const std::string& prompt);

void AddKeyOptions(CLI::App& command, KeyOptions& options);

// Fills the password or the private key of `request`. Without an option, asks on the terminal
// without echo; with no terminal either, ends the command as a usage error.
void LoadKeys(const std::string& command, const std::string& archive, const KeyOptions& options,
              ArchiveExtractRequest& request);

}  // namespace dcf
