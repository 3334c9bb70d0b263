#pragma once
// What one ExtractArchive call is to do. Built by the caller, used for one call.

#include <functional>
#include <string>

#include "Common/Common/SecureBuffer.h"
#include "crypto/SecurityKey.h"

struct ArchiveExtractRequest {
    std::u16string sourcePath;  // the file that holds the archive
    std::u16string targetPath;  // target folder; one final separator is ignored
    bool keyGiven = false;      // a note for the caller: extraction goes by what the key holds
    Zelmarik::DCCSecurityKey securityKey;
    bool passwordGiven = false;  // a note for the caller: extraction goes by what password holds
    Zelmarik::SecureU16String password;  // each character is narrowed to its low byte before use
    // An entry that is the source file itself is written beside it and takes its place at the
    // end of the run, unasked: the self-extracting file that carries a newer version of itself.
    // Without this the source is never replaced, whatever the entry is called.
    bool mayReplaceSource = false;
    // A file cut short by a failure or a cancel stays under its name with what was written;
    // without this it is deleted, and no file under a real name is ever incomplete.
    bool keepPartialFile = true;
    // Which entries are extracted, and under which names: called with each stored name, it
    // returns false to leave the entry out, or may rewrite the name (in the stored form, still
    // a safe one). The folders above a chosen file are made too. Empty: all, as stored.
    std::function<bool(std::u16string& name)> selectEntry;
};
