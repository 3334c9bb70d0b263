#pragma once
// What one ExtractArchive call is to do. Built by the caller, used for one call.

#include <functional>
#include <string>

#include "crypto/SecurityKey.h"

struct ArchiveExtractRequest {
    std::u16string sourcePath;  // the file that holds the archive
    std::u16string targetPath;  // target folder; one final separator is ignored
    bool keyGiven = false;      // a note for the caller: extraction goes by what the key holds
    Zelmarik::DCCSecurityKey securityKey;
    bool passwordGiven = false;  // a note for the caller: extraction goes by what password holds
    std::u16string password;     // each character is narrowed to its low byte before use
    // Which entries are extracted, and under which names: called with each stored name, it
    // returns false to leave the entry out, or may rewrite the name (in the stored form, still
    // a safe one). The folders above a chosen file are made too. Empty: all, as stored.
    std::function<bool(std::u16string& name)> selectEntry;
};
