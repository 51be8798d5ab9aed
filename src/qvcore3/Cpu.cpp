#include <qvcore3/qvcore3.h>

#include <cstdlib>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace {

uint32_t probeProcessor() noexcept
{
    uint32_t features = 0;
#if defined(__x86_64__) || defined(__i386__)
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) {
        return 0;
    }
    const bool ssse3 = (ecx & bit_SSSE3) != 0;
    const bool sse41 = (ecx & bit_SSE4_1) != 0;
    const bool osxsave = (ecx & bit_OSXSAVE) != 0;
    const bool avx = (ecx & bit_AVX) != 0;
    const bool popcnt = (ecx & bit_POPCNT) != 0;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) {
        return 0;
    }
    const bool sha = (ebx & bit_SHA) != 0;
    if (sha && ssse3 && sse41) {
        features |= QV_CPU_SHA;
    }
    // The wide registers are usable only when the operating system saves
    // them on a context switch, which XCR0 tells.
    if (!osxsave) {
        return features;
    }
    unsigned xcr0 = 0, xcr0High = 0;
    __asm__ volatile("xgetbv" : "=a"(xcr0), "=d"(xcr0High) : "c"(0));
    static_cast<void>(xcr0High);
    const unsigned ymmState = 0x6;  // SSE and AVX state
    const unsigned zmmState = 0xE6; // and the opmask and both halves of the upper registers
    unsigned eax8 = 0, ebx8 = 0, ecx8 = 0, edx8 = 0;
    const bool lzcnt = __get_cpuid(0x80000001u, &eax8, &ebx8, &ecx8, &edx8) != 0 && (ecx8 & bit_LZCNT) != 0;
    const bool avx2 = (ebx & bit_AVX2) != 0 && (ebx & bit_BMI) != 0 && (ebx & bit_BMI2) != 0 && avx && popcnt && lzcnt;
    if (!avx2 || (xcr0 & ymmState) != ymmState) {
        return features;
    }
    features |= QV_CPU_AVX2;
    const bool avx512 = (ebx & bit_AVX512F) != 0 && (ebx & bit_AVX512BW) != 0 && (ebx & bit_AVX512VL) != 0 &&
                        (ecx & bit_AVX512VBMI) != 0 && (ecx & bit_AVX512VBMI2) != 0;
    if (avx512 && (xcr0 & zmmState) == zmmState) {
        features |= QV_CPU_AVX512;
    }
#endif
    return features;
}

} // namespace

extern "C" uint32_t QVCpuFeatures(void) noexcept
{
    // A function-local static: the probe runs once even when threads race to
    // the first call.
    static const uint32_t s_features = probeProcessor();
    const char* portable = std::getenv("QVCL3_PORTABLE_CODE");
    if (portable != nullptr && portable[0] != '\0' && std::strcmp(portable, "0") != 0) {
        return 0;
    }
    return s_features;
}
