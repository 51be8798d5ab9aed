// qvcl3-regsvr: registers the component classes of a module in the key store
// by calling the module's DllRegisterServer (with -u, DllUnregisterServer).
//
// Exit status: 0 done, 1 usage, 2 the module does not load, 3 it lacks the
// entry point, 4 the entry point failed.

#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: qvcl3-regsvr [-u] [-s] MODULE.so\n"
                         "  -u  unregister the module's classes\n"
                         "  -s  print nothing on success\n");
}

} // namespace

int main(int argc, char** argv)
{
    bool unregister = false;
    bool silent = false;
    const char* file = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "-u") == 0) {
            unregister = true;
        } else if (std::strcmp(argv[i], "-s") == 0) {
            silent = true;
        } else if (argv[i][0] == '-' || file) {
            usage();
            return 1;
        } else {
            file = argv[i];
        }
    }
    if (!file || !*file) {
        usage();
        return 1;
    }
    // A bare name means the file here, not a search of the library path.
    std::string path = std::strchr(file, '/') ? file : std::string("./") + file;
    const qv::String widePath(path.c_str(), -1, u"UTF-8");
    const char* entry = unregister ? "DllUnregisterServer" : "DllRegisterServer";

    QVHANDLE library = QV_INVALID_HANDLE;
    QVRESULT result = QVModuleLibOpen(QV_INVALID_HANDLE, widePath.getData(), &library);
    if (QV_FAILED(result)) {
        std::fprintf(stderr, "qvcl3-regsvr: cannot load %s: 0x%08X\n", file, static_cast<unsigned>(result));
        return 2;
    }
    void* symbol = nullptr;
    const qv::String wideEntry(entry, -1, u"ASCII");
    if (QV_FAILED(QVLibGetSymbol(library, wideEntry.getData(), &symbol)) || !symbol) {
        std::fprintf(stderr, "qvcl3-regsvr: %s has no %s\n", file, entry);
        QVModuleLibClose(library);
        return 3;
    }
    result = reinterpret_cast<QVDllRegisterServerFunction>(symbol)();
    QVModuleLibClose(library);
    if (QV_FAILED(result)) {
        std::fprintf(stderr, "qvcl3-regsvr: %s in %s failed: 0x%08X\n", entry, file, static_cast<unsigned>(result));
        return 4;
    }
    if (!silent)
        std::printf("qvcl3-regsvr: %s in %s succeeded.\n", entry, file);
    return 0;
}
