#include "crypto/rsa/RowKernels.h"

#include <atomic>

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#define DCF_ROW_KERNELS_X86_64 1
#endif

namespace Zelmarik::rsa {

namespace {

std::atomic<bool> kernelsDisabled{false};

#ifdef DCF_ROW_KERNELS_X86_64

bool ProbeBmi2Adx() {
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) {
        return false;
    }
    constexpr unsigned int kBmi2 = 1u << 8;
    constexpr unsigned int kAdx = 1u << 19;
    return (ebx & kBmi2) != 0 && (ebx & kAdx) != 0;
}

// Two carry chains: OF adds the old r[j] to the low half of a[j] * m, CF adds the high half of
// the previous product. The last high half takes both chains' carries.
template <std::size_t N>
Limb AdxRow(Limb* r, const Limb* a, Limb m) {
    Limb carry;
    __asm__ volatile(
        "xorl %%r8d, %%r8d\n\t"
        ".set .Lrow_offset, 0\n\t"
        ".rept %c[n]\n\t"
        "mulxq .Lrow_offset(%[a]), %%rax, %%rbx\n\t"
        "adoxq .Lrow_offset(%[r]), %%rax\n\t"
        "adcxq %%r8, %%rax\n\t"
        "movq %%rax, .Lrow_offset(%[r])\n\t"
        "movq %%rbx, %%r8\n\t"
        ".set .Lrow_offset, .Lrow_offset + 8\n\t"
        ".endr\n\t"
        "movl $0, %%eax\n\t"
        "adcxq %%rax, %%r8\n\t"
        "adoxq %%rax, %%r8\n\t"
        "movq %%r8, %[carry]\n\t"
        : [carry] "=r"(carry)
        : [r] "r"(r), [a] "r"(a), [n] "n"(N), "d"(m)
        : "rax", "rbx", "r8", "cc", "memory");
    return carry;
}

#endif

}  // namespace

RowKernel FixedRowKernel(std::size_t n) {
    if (kernelsDisabled.load(std::memory_order_relaxed)) {
        return nullptr;
    }
#ifdef DCF_ROW_KERNELS_X86_64
    static const bool available = ProbeBmi2Adx();
    if (available) {
        switch (n) {
            case 32:
                return &AdxRow<32>;  // 2048 bits
            case 64:
                return &AdxRow<64>;  // 4096 bits
            default:
                break;
        }
    }
#endif
    (void)n;
    return nullptr;
}

void SetRowKernelsDisabled(bool disabled) {
    kernelsDisabled.store(disabled, std::memory_order_relaxed);
}

}  // namespace Zelmarik::rsa
