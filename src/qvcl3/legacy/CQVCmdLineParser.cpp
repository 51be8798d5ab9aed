#include <qv/legacy/CQVCmdLineParser.h>

#include <qv/core/Boundary.h>

#include "util/CopyText.h"

namespace qv {

using util::detail::copyText;

namespace {

String textOf(const char16_t* text)
{
    return text ? String(text) : String();
}

} // namespace

CQVCmdLineParser::CQVCmdLineParser() = default;

CQVCmdLineParser::~CQVCmdLineParser() = default;

Result CQVCmdLineParser::AddOption(char16_t shortName, const char16_t* longName, bool takesValue,
                                   const char16_t* description)
{
    return qvcom::guardBoundary(
        [&] { m_parser.addOption(shortName, textOf(longName), takesValue, textOf(description)); });
}

Result CQVCmdLineParser::Parse(int argc, const char* const* argv)
{
    if (argc < 0 || (!argv && argc > 0))
        return results::INVALIDARG;
    return qvcom::guardBoundary([&] { m_parser.parse(argc, argv); });
}

Result CQVCmdLineParser::Parse(const char16_t* commandLine)
{
    if (!commandLine)
        return results::POINTER;
    return qvcom::guardBoundary([&] { m_parser.parse(String(commandLine)); });
}

bool CQVCmdLineParser::IsSet(const char16_t* name) const
{
    return name && m_parser.isSet(String(name));
}

Result CQVCmdLineParser::GetValue(const char16_t* name, char16_t* buffer, unsigned int size) const
{
    if (!name)
        return results::POINTER;
    return qvcom::guardBoundary([&]() -> Result {
        const std::vector<String> values = m_parser.getValues(String(name));
        if (values.empty())
            return results::FILE_NOT_FOUND;
        return copyText(values.back(), buffer, size);
    });
}

int32_t CQVCmdLineParser::GetArgumentCount() const
{
    return m_parser.getArgumentCount();
}

Result CQVCmdLineParser::GetArgument(int32_t index, char16_t* buffer, unsigned int size) const
{
    if (index < 0 || index >= m_parser.getArgumentCount())
        return results::INVALIDARG;
    return qvcom::guardBoundary([&] { return copyText(m_parser.getArgument(index), buffer, size); });
}

Result CQVCmdLineParser::GetUsage(char16_t* buffer, unsigned int size) const
{
    return qvcom::guardBoundary([&] { return copyText(m_parser.getUsage(), buffer, size); });
}

Result CQVCmdLineParser::GetLastError(char16_t* buffer, unsigned int size) const
{
    return qvcom::guardBoundary([&] { return copyText(m_parser.getLastError(), buffer, size); });
}

util::CmdLineParser& CQVCmdLineParser::GetParser()
{
    return m_parser;
}

} // namespace qv
