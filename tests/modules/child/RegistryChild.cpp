// Helper program of the key-store tests, run in several processes at once.
//   churn INDEX COUNT  registers and unregisters class INDEX COUNT times, then
//                      registers it once more
//   write              rewrites values of the key "Kill" until killed
//   ready FILE         (with write) creates FILE once the first value is in

#include <qv/core/DllModule.h>
#include <qv/util/RegistryKey.h>

#include "../KillPattern.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

int churn(int index, int count)
{
    const GUID clsid = qvtest::churnClassId(index);
    static std::u16string progId;
    static std::u16string independent;
    progId = qvtest::churnProgId(index, true);
    independent = qvtest::churnProgId(index, false);
    qv::qvcom::ClassData table[] = {
        {&clsid, 0, nullptr, [] { return progId.c_str(); }, [] { return independent.c_str(); }, nullptr, nullptr,
         nullptr},
        {nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
    };
    qv::qvcom::DllModule module(table);
    const std::u16string path = u"/nonexistent/churn" + std::u16string(1, static_cast<char16_t>(u'0' + index)) + u".so";
    for (int i = 0; i <= count; ++i) {
        qv::Result result = module.RegisterServer(path.c_str());
        if (result >= 0 && i < count)
            result = module.UnregisterServer();
        if (result < 0) {
            std::fprintf(stderr, "churn %d: 0x%08X at round %d\n", index, static_cast<unsigned>(result), i);
            return 1;
        }
    }
    return 0;
}

int write(const char* ready)
{
    const qv::util::RegistryKey key = qv::util::RegistryKey::currentUser().createKey(u"Kill");
    for (uint32_t n = 0;; ++n) {
        const std::u16string value = qvtest::killValue(n);
        key.setValue(qvtest::killValueName(n).c_str(), qv::String(value.data(), static_cast<int32_t>(value.size())));
        if (n == 0 && ready)
            std::fclose(std::fopen(ready, "w"));
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::strcmp(argv[1], "churn") == 0)
        return churn(std::atoi(argv[2]), std::atoi(argv[3]));
    if (argc >= 2 && std::strcmp(argv[1], "write") == 0)
        return write(argc == 4 && std::strcmp(argv[2], "ready") == 0 ? argv[3] : nullptr);
    std::fprintf(stderr, "usage: qvcl3_test_modules_child churn INDEX COUNT | write [ready FILE]\n");
    return 2;
}
