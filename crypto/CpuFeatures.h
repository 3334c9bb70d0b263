#pragma once
// The processor features the ciphers choose their code paths by. Probed once; tests and
// benchmarks may switch AES-NI off to run the portable path on a machine that has it.

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

}  // namespace crypto
