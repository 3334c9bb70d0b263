#include "crypto/CpuFeatures.h"

#include <atomic>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace crypto {
namespace {

bool ProbeAesNi() {
#if defined(__x86_64__) || defined(__i386__)
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) {
        return false;
    }
    constexpr unsigned int kSsse3 = 1u << 9;
    constexpr unsigned int kAes = 1u << 25;
    return (ecx & kSsse3) != 0 && (ecx & kAes) != 0;
#else
    return false;
#endif
}

std::atomic<bool> aesNiDisabled{false};

}  // namespace

bool CpuHasAesNi() {
    static const bool hasAesNi = ProbeAesNi();
    return hasAesNi;
}

void SetAesNiDisabled(bool disabled) {
    aesNiDisabled.store(disabled, std::memory_order_relaxed);
}

bool AesNiInUse() {
    return CpuHasAesNi() && !aesNiDisabled.load(std::memory_order_relaxed);
}

std::string_view AesPathName() {
    return AesNiInUse() ? "AES-NI" : "tables";
}

}  // namespace crypto
