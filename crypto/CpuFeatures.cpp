#include "crypto/CpuFeatures.h"

#include <atomic>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace crypto {
namespace {

// A feature the probe found, and whether a test has switched it off.
class Feature {
public:
    explicit Feature(bool present) : present_(present) {}
    bool Present() const { return present_; }
    void SetDisabled(bool disabled) { disabled_.store(disabled, std::memory_order_relaxed); }
    bool InUse() const { return present_ && !disabled_.load(std::memory_order_relaxed); }

private:
    const bool present_;
    std::atomic<bool> disabled_{false};
};

#if defined(__x86_64__) || defined(__i386__)
constexpr unsigned int kSsse3 = 1u << 9;   // leaf 1, ecx
constexpr unsigned int kSse41 = 1u << 19;  // leaf 1, ecx
constexpr unsigned int kAes = 1u << 25;    // leaf 1, ecx
constexpr unsigned int kSha = 1u << 29;    // leaf 7, ebx

// The ecx of leaf 1, 0 where the leaf is missing.
unsigned int BasicFeatures() {
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 ? ecx : 0;
}

bool ProbeAesNi() {
    const unsigned int ecx = BasicFeatures();
    return (ecx & kSsse3) != 0 && (ecx & kAes) != 0;
}

bool ProbeShaNi() {
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0 || (ebx & kSha) == 0) {
        return false;
    }
    const unsigned int basic = BasicFeatures();
    return (basic & kSsse3) != 0 && (basic & kSse41) != 0;
}
#else
bool ProbeAesNi() {
    return false;
}

bool ProbeShaNi() {
    return false;
}
#endif

Feature& AesNi() {
    static Feature feature(ProbeAesNi());
    return feature;
}

Feature& ShaNi() {
    static Feature feature(ProbeShaNi());
    return feature;
}

}  // namespace

bool CpuHasAesNi() {
    return AesNi().Present();
}

void SetAesNiDisabled(bool disabled) {
    AesNi().SetDisabled(disabled);
}

bool AesNiInUse() {
    return AesNi().InUse();
}

std::string_view AesPathName() {
    return AesNiInUse() ? "AES-NI" : "tables";
}

bool CpuHasShaNi() {
    return ShaNi().Present();
}

void SetShaNiDisabled(bool disabled) {
    ShaNi().SetDisabled(disabled);
}

bool ShaNiInUse() {
    return ShaNi().InUse();
}

std::string_view Sha1PathName() {
    return ShaNiInUse() ? "SHA extensions" : "portable";
}

}  // namespace crypto
