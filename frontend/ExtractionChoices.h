#pragma once
// What the interactive front ends do when the user confirms: take the key or the password,
// and settle the target folder. Shared by the dialog and the terminal.

#include <string>
#include <string_view>

enum class CredentialsOutcome {
    Accepted,       // ExtractionParameters holds the key or the password
    KeyUnreadable,  // "IDS_UNABLE_TO_LOAD_PRIVKEY"
    NothingGiven,   // "IDS_USE_PWD_OR_KEY"
};

// A key path is tried first and, when given, the password is not looked at.
// The password goes into ExtractionParameters' wiping string; the caller wipes its own copy.
CredentialsOutcome AcceptCredentials(const std::u16string& keyPath, std::u16string_view password);

// The folder an archive extracts into: a subfolder of `target` named after the running
// archive (its file name up to the last dot), with a final separator. A target is a parent
// folder, never the folder itself; an empty target gives a folder relative to the current one.
std::u16string ArchiveTargetFolder(const std::u16string& target, const std::u16string& modulePath);
