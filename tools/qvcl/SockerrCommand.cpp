// sockerr: the name and description of a socket error code.
#include "Commands.h"

#include <qv/net/SocketError.h>

#include <cstdio>
#include <cstdlib>

namespace qvcl {
namespace {

constexpr uint32_t FAMILY_BASE = 0x8BE30000u;
constexpr uint32_t FAMILY_MASK = 0xFFFF0000u;

// A decimal number or, with "0x", a hexadecimal one; false for anything
// else or a value beyond 32 bits.
bool parseCode(const std::string& text, bool& hexadecimal, uint32_t& value)
{
    hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* digits = text.c_str() + (hexadecimal ? 2 : 0);
    if (*digits == 0 || *digits == '-' || *digits == '+' || *digits == ' ')
        return false;
    char* end = nullptr;
    const unsigned long long parsed = std::strtoull(digits, &end, hexadecimal ? 16 : 10);
    if (*end != 0 || parsed > 0xFFFFFFFFull)
        return false;
    value = static_cast<uint32_t>(parsed);
    return true;
}

} // namespace

int runSockerr(Arguments& arguments, int argc, char** argv)
{
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    const std::vector<std::string> words = arguments.positional();
    if (words.size() != 1)
        throw UsageError{words.empty() ? "missing CODE" : "extra operand '" + words[1] + "'"};
    bool hexadecimal = false;
    uint32_t value = 0;
    if (!parseCode(words[0], hexadecimal, value))
        throw UsageError{"not a number: '" + words[0] + "'"};

    int32_t code = static_cast<int32_t>(value);
    if (!hexadecimal)
        code = QV_E_SOCKETFromNativeEaiSocketError(static_cast<int32_t>(value));
    // The description of a family member starts with its name; "FAIL" is
    // what the family answers for everything else.
    const std::string description = narrow(qv::String(QVGetDescriptionFromQV_E_SOCKET(code)));
    // A number the sockets numbering lacks maps to FAIL too.
    const bool member = code == 0 || (hexadecimal && static_cast<uint32_t>(code) == 0x80004005u) ||
                        ((static_cast<uint32_t>(code) & FAMILY_MASK) == FAMILY_BASE && description != "FAIL");
    if (!member) {
        report(arguments.command(), "unknown socket error code: " + words[0]);
        return EXIT_ERROR;
    }
    std::string name = description;
    std::string text;
    const size_t space = description.find(' ');
    if (space != std::string::npos) {
        name = description.substr(0, space);
        text = description.substr(space + 1);
        while (!text.empty() && text.back() == ' ')
            text.pop_back();
    }
    const uint32_t unsignedCode = static_cast<uint32_t>(code);
    if ((unsignedCode & FAMILY_MASK) == FAMILY_BASE)
        std::printf("QV_E_SOCKET_%s (0x%08X, %u): %s\n", name.c_str(), unsignedCode, unsignedCode - FAMILY_BASE,
                    text.c_str());
    else
        std::printf("QV_E_SOCKET_%s (0x%08X)\n", name.c_str(), unsignedCode);
    return EXIT_OK;
}

} // namespace qvcl
