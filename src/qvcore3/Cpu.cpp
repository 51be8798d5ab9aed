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
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) {
        return 0;
    }
    const bool sha = (ebx & bit_SHA) != 0;
    if (sha && ssse3 && sse41) {
        features |= QV_CPU_SHA;
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
