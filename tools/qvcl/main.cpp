// qvcl: the library's command-line tool. Each subcommand is a function over
// the words that follow its name; they share Tool.h.
#include "Commands.h"
#include "Tool.h"

#include <qv/core/Exception.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace {

struct Subcommand {
    const char* name;
    int (*run)(qvcl::Arguments&, int, char**);
    const char* synopsis;
    const char* description;
};

const Subcommand kSubcommands[] = {
    {"iconv", qvcl::runIconv, "qvcl iconv -f FROM -t TO [-c] [-o OUTPUT] [FILE...]\n  or:  qvcl iconv -l",
     "Convert text from one encoding to another (standard input when no FILE is given)."},
    {"encodings", qvcl::runEncodings, "qvcl encodings", "List every encoding with its code page and aliases."},
    {"alnum", qvcl::runAlnum, "qvcl alnum [-d] [-w COLS] [--alphabet=ALPHABET] [FILE]",
     "Encode FILE (or standard input) as five-bits-per-character text, or decode it."},
    {"md5sum", qvcl::runMd5sum, "qvcl md5sum [-c] [FILE...]", "Print or check MD5 checksums."},
    {"sha1sum", qvcl::runSha1sum, "qvcl sha1sum [-c] [FILE...]", "Print or check SHA-1 checksums."},
    {"sha256sum", qvcl::runSha256sum, "qvcl sha256sum [-c] [FILE...]", "Print or check SHA-256 checksums."},
    {"ini", qvcl::runIni, "qvcl ini get FILE SET KEY | set FILE SET KEY VALUE | del FILE SET [KEY] | list FILE [SET]",
     "Read and change an INI file."},
    {"sockerr", qvcl::runSockerr, "qvcl sockerr CODE",
     "Print the name and description of a socket error code (decimal Windows Sockets number or hexadecimal "
     "result code)."},
    {"regsvr", qvcl::runRegsvr, "qvcl regsvr [-u] [-s] MODULE.so",
     "Register the component classes of a module (with -u, unregister them)."},
};

void printHelp()
{
    std::printf("Usage: qvcl COMMAND [OPTION...] [ARGUMENT...]\n"
                "The qvcl3 library's command-line tool.\n\nCommands:\n");
    for (const Subcommand& command : kSubcommands)
        std::printf("  %-10s %s\n", command.name, command.description);
    std::printf("\n'qvcl COMMAND --help' describes a command. Exit status: 0 success, 1 failure, 2 bad usage.\n");
}

int runSubcommand(const Subcommand& subcommand, int argc, char** argv)
{
    qvcl::Arguments arguments(std::string("qvcl ") + subcommand.name, subcommand.synopsis, subcommand.description);
    try {
        return subcommand.run(arguments, argc, argv);
    } catch (const qvcl::UsageError& error) {
        qvcl::report(arguments.command(), error.message + " (see '" + arguments.command() + " --help')");
        return qvcl::EXIT_USAGE;
    } catch (const qv::Exception& error) {
        qvcl::report(arguments.command(), qvcl::narrow(error.getDescription()));
    } catch (const std::bad_alloc&) {
        qvcl::report(arguments.command(), "out of memory");
    }
    return qvcl::EXIT_ERROR;
}

} // namespace

int main(int argc, char** argv)
{
    // Installed under its old name too, with its old exit codes.
    const char* program = argc > 0 ? std::strrchr(argv[0], '/') : nullptr;
    program = program ? program + 1 : (argc > 0 ? argv[0] : "qvcl");
    if (std::strcmp(program, "qvcl3-regsvr") == 0)
        return qvcl::runLegacyRegsvr(argc - 1, argv + 1);

    if (argc < 2) {
        std::fprintf(stderr, "qvcl: missing command (see 'qvcl --help')\n");
        return qvcl::EXIT_USAGE;
    }
    const std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        printHelp();
        return qvcl::EXIT_OK;
    }
    if (name == "--version") {
        std::printf("qvcl (qvcl3) 3.0.0\n");
        return qvcl::EXIT_OK;
    }
    for (const Subcommand& subcommand : kSubcommands) {
        if (name == subcommand.name)
            return runSubcommand(subcommand, argc - 2, argv + 2);
    }
    std::fprintf(stderr, "qvcl: unknown command '%s' (see 'qvcl --help')\n", name.c_str());
    return qvcl::EXIT_USAGE;
}
