// Component modules: register the sample CP037 module, let the converter
// lookup find it by encoding name, and unregister it again. The store used
// is a temporary one unless QV_REGISTRY_DIR already names one.

#include "Demo.h"

#include <ftw.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// Calls one of the module's registration exports, as qvcl3-regsvr does.
QVRESULT callRegistration(const char16_t* entry)
{
    const qv::String path(QVCL3_DEMO_CP037_MODULE, -1, u"UTF-8");
    QVHANDLE library = QV_INVALID_HANDLE;
    QVRESULT result = QVModuleLibOpen(QV_INVALID_HANDLE, path.getData(), &library);
    if (QV_FAILED(result))
        return result;
    void* symbol = nullptr;
    result = QVLibGetSymbol(library, entry, &symbol);
    if (QV_SUCCEEDED(result))
        result = reinterpret_cast<QVDllRegisterServerFunction>(symbol)();
    QVModuleLibClose(library);
    return result;
}

} // namespace

void demoModules()
{
    section("Component modules");
    const qv::util::Guid id = qv::util::Guid::createRandom();
    std::printf("a new identifier: %s (version %d)\n", id.toString().toUtf8().c_str(), id.getVersion());

    std::string store;
    if (!std::getenv("QV_REGISTRY_DIR")) {
        char pattern[] = "/tmp/qvcl3-demo-registry-XXXXXX";
        if (mkdtemp(pattern))
            store = pattern;
        setenv("QV_REGISTRY_DIR", store.c_str(), 1);
    }
    std::printf("DllRegisterServer: 0x%08X\n", static_cast<unsigned>(callRegistration(u"DllRegisterServer")));

    GUID clsid;
    if (QVComClassIDFromProgID(u"Velmara.CharCodec.CP037", &clsid) == 0)
        std::printf("Velmara.CharCodec.CP037 is %s\n", qv::util::Guid(clsid).toString().toUtf8().c_str());

    const signed char ebcdic[] = {-56, -123, -109, -109, -106, 64, -26, -106, -103, -109, -124, 90}; // "Hello World!"
    qv::Reference<qv::text::charset::ByteToCharConverter> decoder =
        qv::text::charset::ByteToCharConverter::getConverter(u"CP037");
    char16_t text[16] = {};
    int32_t inPos = 0;
    int32_t outPos = 0;
    decoder->convert(ebcdic, &inPos, static_cast<int32_t>(sizeof ebcdic), text, &outPos, 16);
    std::printf("%s decodes 12 bytes to \"%s\"\n", utf8(decoder->getEncodingName()).c_str(), utf8(text).c_str());
    decoder.reset();

    std::printf("DllUnregisterServer: 0x%08X\n", static_cast<unsigned>(callRegistration(u"DllUnregisterServer")));
    try {
        qv::text::charset::ByteToCharConverter::getConverter(u"CP037");
    } catch (const qv::text::charset::UnknownEncodingException&) {
        std::printf("after unregistering, CP037 is unknown again\n");
    }
    QVComFreeUnusedLibraries(nullptr);
    if (!store.empty()) {
        unsetenv("QV_REGISTRY_DIR");
        nftw(
            store.c_str(), [](const char* path, const struct stat*, int, struct FTW*) { return std::remove(path); }, 16,
            FTW_DEPTH | FTW_PHYS);
    }
}
