#pragma once
// The processor features the ciphers and hashes choose their code paths by. Probed once; tests
// and benchmarks may switch a feature off to run the portable path on a machine that has it.

#include <string_view>

namespace crypto {

// True when the processor has AES-NI and SSSE3.
bool CpuHasAesNi();

// Forces the table-driven AES (true) or lets the probe decide again (false).
void SetAesNiDisabled(bool disabled);

// True when AES goes through AES-NI now.
bool AesNiInUse();

// "AES-NI" or "tables": the AES path in force, for test and benchmark output.
std::string_view AesPathName();

// True when the processor has the SHA extensions, SSSE3 and SSE4.1.
bool CpuHasShaNi();

// Forces the portable SHA-1 (true) or lets the probe decide again (false).
void SetShaNiDisabled(bool disabled);

// True when SHA-1 goes through the SHA extensions now.
bool ShaNiInUse();

// "SHA extensions" or "portable": the SHA-1 path in force, for test and benchmark output.
std::string_view Sha1PathName();

}  // namespace crypto
