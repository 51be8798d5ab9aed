#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace {

// The flags Linux lists for the first processor; it leaves out the AVX and
// AVX-512 flags when it does not save those registers itself.
std::set<std::string> kernelFlags()
{
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line)) {
        if (line.rfind("flags", 0) == 0) {
            std::istringstream words(line.substr(line.find(':') + 1));
            std::set<std::string> flags;
            for (std::string w; words >> w;) {
                flags.insert(w);
            }
            return flags;
        }
    }
    return {};
}

TEST(CpuFeatures, WideVectorLevelsMatchWhatTheKernelReports)
{
    const std::set<std::string> flags = kernelFlags();
    if (flags.empty()) {
        GTEST_SKIP() << "no /proc/cpuinfo flags";
    }
    auto all = [&flags](std::initializer_list<const char*> names) {
        for (const char* n : names) {
            if (flags.count(n) == 0) {
                return false;
            }
        }
        return true;
    };
    const uint32_t features = QVCpuFeatures();
    const bool avx2 = all({"avx", "avx2", "bmi1", "bmi2", "popcnt", "abm"});
    EXPECT_EQ(avx2, (features & QV_CPU_AVX2) != 0);
    EXPECT_EQ(avx2 && all({"avx512f", "avx512bw", "avx512vl", "avx512vbmi", "avx512_vbmi2"}),
              (features & QV_CPU_AVX512) != 0);

    setenv("QVCL3_PORTABLE_CODE", "1", 1);
    EXPECT_EQ(0u, QVCpuFeatures());
    unsetenv("QVCL3_PORTABLE_CODE");
    EXPECT_EQ(features, QVCpuFeatures());
}

} // namespace
