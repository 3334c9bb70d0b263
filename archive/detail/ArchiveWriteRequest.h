#pragma once
// What one WriteArchive call is to do. Built by the caller, used for one call.

#include <cstdint>
#include <string>
#include <vector>

#include "Common/Common/SecureBuffer.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "crypto/SecurityKey.h"

// One folder or file of a new archive. The list does not recurse: the caller lists each folder
// and each file.
struct ArchiveWriteItem {
    std::u16string path;  // full path of the folder or file
    bool isFolder = false;
    std::uint64_t size = 0;  // as the caller found it; not measured again
    bool hasCategories = false;
    Zelmarik::CCategoryContainer categories;
};

struct ArchiveWriteRequest {
    // The common root of the items: what stands before its last separator is cut off the items'
    // paths to form the names of the archive.
    std::u16string rootPath;
    // File name of the archive; after a successful settling the full path of the archive.
    std::u16string archiveName;
    std::u16string archiveFolder;
    std::vector<ArchiveWriteItem> items;
    bool sealForKey = false;  // the archive gets an RSA slot for securityKey
    Zelmarik::DCCSecurityKey securityKey;
    bool passwordGiven = false;          // password counts even when it is empty
    Zelmarik::SecureU16String password;  // each character is narrowed to its low byte
    // An old archive stays until the new one is complete, which then takes its place in one
    // step: a failed or interrupted write leaves it as it was. Without this it is deleted first.
    bool replaceWhenComplete = false;
};
