#pragma once
// What dcf says about how an archive is sealed.

#include <cstdint>
#include <string>

namespace dcftool {

// The ciphers of a suite in words: "AES with a 256-bit key", "Serpent, Twofish and AES, each
// with a 256-bit key, in cascade"; "unknown suite 12" for one outside the table.
std::string SuiteInWords(std::uint32_t suite);

// What the clear bytes of a key block tell: every image has both slots, and which of them a key
// fills, like the suite, is only known once a key opens it.
std::string KeyBlockInWords();

}  // namespace dcftool
