#include <qv/text/charset/SimdLevel.h>
#include <qvcore3/qvcore3.h>

#include <atomic>
#include <cstring>

#include "Simd.h"

namespace qv::text::charset {

namespace {

SimdLevel bestLevel()
{
#if QVCL3_CHARSET_SSE2
    const uint32_t features = QVCpuFeatures();
    if ((features & QV_CPU_AVX512) != 0) {
        return SimdLevel::Avx512;
    }
    if ((features & QV_CPU_AVX2) != 0) {
        return SimdLevel::Avx2;
    }
    return SimdLevel::Sse2;
#else
    return SimdLevel::Scalar;
#endif
}

SimdLevel capped(SimdLevel level)
{
    const SimdLevel best = bestLevel();
    return static_cast<int>(level) < static_cast<int>(best) ? level : best;
}

SimdLevel fromEnvironment()
{
    char value[16];
    if (QVGetEnvironmentVariable("QV_CHARSET_SIMD", value, sizeof value, nullptr) == QV_S_OK) {
        static const char* const names[] = {"scalar", "sse2", "avx2", "avx512"};
        for (int level = 0; level < 4; ++level) {
            if (std::strcmp(value, names[level]) == 0) {
                return capped(static_cast<SimdLevel>(level));
            }
        }
    }
    return bestLevel();
}

std::atomic<int>& current()
{
    static std::atomic<int> level{static_cast<int>(fromEnvironment())};
    return level;
}

} // namespace

SimdLevel getUtf8SimdLevel()
{
    return static_cast<SimdLevel>(current().load(std::memory_order_relaxed));
}

SimdLevel setUtf8SimdLevel(SimdLevel level)
{
    const SimdLevel used = capped(level);
    current().store(static_cast<int>(used), std::memory_order_relaxed);
    return used;
}

} // namespace qv::text::charset
