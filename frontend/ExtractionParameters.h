#pragma once
// What is to be extracted: one record per process, filled by the command line or the
// interactive front end before the extraction starts, and only read from then on.

#include <string>

#include "Common/Common/SecureBuffer.h"
#include "crypto/SecurityKey.h"

struct CExtractionParameters {
    bool consoleMode = false;    // the command line path: no questions, files are replaced
    bool passwordGiven = false;  // never together with keyGiven
    bool keyGiven = false;       // securityKey holds a private key that loaded without error
    std::u16string sourcePath;
    std::u16string targetPath;
    Zelmarik::SecureU16String password;
    Zelmarik::DCCSecurityKey securityKey;
};

extern CExtractionParameters ExtractionParameters;
