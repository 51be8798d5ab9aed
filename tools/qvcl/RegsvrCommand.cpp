// regsvr: calls a component module's registration entry point.
#include "Commands.h"

#include <qv/core/Result.h>
#include <qv/exec/SharedLibrary.h>

#include <cstdio>
#include <cstring>

namespace qvcl {
namespace {

using RegistrationFunction = qv::Result (*)();

enum class Outcome { DONE, NOT_LOADED, NO_ENTRY, FAILED };

struct Registration {
    Outcome outcome;
    std::string message;
};

Registration callEntry(const std::string& file, bool unregister)
{
    // A bare name means the file here, not a search of the library path.
    const std::string path = file.find('/') != std::string::npos ? file : "./" + file;
    const char* entry = unregister ? "DllUnregisterServer" : "DllRegisterServer";
    std::unique_ptr<qv::exec::SharedLibrary> library;
    char code[16];
    try {
        library.reset(new qv::exec::SharedLibrary(wide(path).getData()));
    } catch (const qv::Exception& error) {
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(error.getResult()));
        return {Outcome::NOT_LOADED, "cannot load " + file + ": " + code};
    }
    void* symbol = nullptr;
    try {
        symbol = library->getSymbol(wide(entry).getData());
    } catch (const qv::Exception&) {
    }
    if (!symbol)
        return {Outcome::NO_ENTRY, file + " has no " + entry};
    const qv::Result result = reinterpret_cast<RegistrationFunction>(symbol)();
    if (result < 0) {
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(result));
        return {Outcome::FAILED, std::string(entry) + " in " + file + " failed: " + code};
    }
    return {Outcome::DONE, std::string(entry) + " in " + file + " succeeded."};
}

} // namespace

int runRegsvr(Arguments& arguments, int argc, char** argv)
{
    qv::util::CmdLineParser& parser = arguments.parser();
    parser.addOption(u'u', u"unregister", false, u"unregister the module's classes");
    parser.addOption(u's', u"silent", false, u"print nothing on success");
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    const std::vector<std::string> words = arguments.positional();
    if (words.size() != 1 || words[0].empty())
        throw UsageError{words.empty() ? "missing MODULE" : "one MODULE expected"};
    const Registration registration = callEntry(words[0], arguments.isSet(u"unregister"));
    if (registration.outcome != Outcome::DONE) {
        report(arguments.command(), registration.message);
        return EXIT_ERROR;
    }
    if (!arguments.isSet(u"silent"))
        std::printf("%s: %s\n", arguments.command().c_str(), registration.message.c_str());
    return EXIT_OK;
}

int runLegacyRegsvr(int argc, char** argv)
{
    bool unregister = false;
    bool silent = false;
    const char* file = nullptr;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "-u") == 0) {
            unregister = true;
        } else if (std::strcmp(argv[i], "-s") == 0) {
            silent = true;
        } else if (argv[i][0] == '-' || file) {
            file = nullptr;
            break;
        } else {
            file = argv[i];
        }
    }
    if (!file || !*file) {
        std::fprintf(stderr, "usage: qvcl3-regsvr [-u] [-s] MODULE.so\n"
                             "  -u  unregister the module's classes\n"
                             "  -s  print nothing on success\n");
        return 1;
    }
    const Registration registration = callEntry(file, unregister);
    switch (registration.outcome) {
    case Outcome::DONE:
        if (!silent)
            std::printf("qvcl3-regsvr: %s\n", registration.message.c_str());
        return 0;
    case Outcome::NOT_LOADED: std::fprintf(stderr, "qvcl3-regsvr: %s\n", registration.message.c_str()); return 2;
    case Outcome::NO_ENTRY: std::fprintf(stderr, "qvcl3-regsvr: %s\n", registration.message.c_str()); return 3;
    case Outcome::FAILED: break;
    }
    std::fprintf(stderr, "qvcl3-regsvr: %s\n", registration.message.c_str());
    return 4;
}

} // namespace qvcl
