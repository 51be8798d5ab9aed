#ifndef QV_TEXT_CHARSET_SIMDLEVEL_H
#define QV_TEXT_CHARSET_SIMDLEVEL_H

#include <qv/core/Export.h>

namespace qv {
namespace text {
namespace charset {

// The instruction-set level of the UTF-8 converters' block loops. Every
// level gives the same output, the same errors at the same positions and the
// same positions after each call; only the speed differs.
enum class SimdLevel { Scalar = 0, Sse2 = 1, Avx2 = 2, Avx512 = 3 };

// The level in use: on first use the best the processor and the operating
// system support (QVCpuFeatures), lowered to the environment variable
// QV_CHARSET_SIMD ("scalar", "sse2", "avx2" or "avx512") when that is set to
// one of those names. A build without SIMD code is always at Scalar.
QV_EXPORT SimdLevel getUtf8SimdLevel();

// Switches the level for the whole process, for tests and benchmarks that
// compare levels in one run; a level the processor lacks is lowered to the
// best it has. Returns the level now in use. Not meant to be called while
// another thread converts (a conversion in flight keeps its level).
QV_EXPORT SimdLevel setUtf8SimdLevel(SimdLevel level);

} // namespace charset
} // namespace text
} // namespace qv

#endif
