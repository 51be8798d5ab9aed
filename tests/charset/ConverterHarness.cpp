#include "ConverterHarness.h"

namespace charset_test {

template <typename D, typename E>
Codec codec(const std::string& name)
{
    return Codec{name, [] { return std::unique_ptr<ByteToCharConverter>(new D()); },
                 [] { return std::unique_ptr<CharToByteConverter>(new E()); }};
}

const std::vector<CodePageName>& codePageNames()
{
    static const std::vector<CodePageName> names = {
        {1250, "CP1250"}, {1251, "CP1251"}, {1253, "CP1253"}, {1254, "CP1254"},  {1255, "CP1255"},
        {1256, "CP1256"}, {1257, "CP1257"}, {1258, "CP1258"}, {737, "CP737"},    {775, "CP775"},
        {850, "CP850"},   {852, "CP852"},   {855, "CP855"},   {857, "CP857"},    {858, "CP858"},
        {862, "CP862"},   {866, "CP866"},   {932, "CP932"},   {20932, "EUC-JP"},
    };
    return names;
}

std::vector<Codec> allCodecs()
{
    std::vector<Codec> codecs = {
        codec<BTCUTF8, CTBUTF8>("UTF-8"),
        codec<BTCUTF16LE, CTBUTF16LE>("UTF-16LE"),
        codec<BTCUTF16BE, CTBUTF16BE>("UTF-16BE"),
        codec<BTCUTF16, CTBUTF16>("UTF-16"),
        codec<BTCUTF32LE, CTBUTF32LE>("UTF-32LE"),
        codec<BTCUTF32BE, CTBUTF32BE>("UTF-32BE"),
        codec<BTCUTF32, CTBUTF32>("UTF-32"),
        codec<BTCASCII, CTBASCII>("ASCII"),
        codec<BTCISO8859_1, CTBISO8859_1>("ISO8859_1"),
        codec<BTCCP437, CTBCP437>("CP437"),
        codec<BTCCP1252, CTBCP1252>("CP1252"),
        codec<BTCAMP7, CTBAMP7>("AMP-7"),
    };
    for (const CodePageName& cp : codePageNames()) {
        const uint32_t number = cp.codePage;
        codecs.push_back(Codec{cp.iconvName,
                               [number] { return std::unique_ptr<ByteToCharConverter>(new BTCCodePage(number)); },
                               [number] { return std::unique_ptr<CharToByteConverter>(new CTBCodePage(number)); }});
    }
    return codecs;
}

} // namespace charset_test

#include <cerrno>
#include <iconv.h>

namespace charset_test {

IconvOracle::IconvOracle(const char* from, const char* to) : m_cd(iconv_open(to, from))
{
    if (m_cd == reinterpret_cast<void*>(-1)) {
        ADD_FAILURE() << "iconv cannot convert " << from << " to " << to;
        m_cd = nullptr;
    }
}

IconvOracle::~IconvOracle()
{
    if (m_cd != nullptr) {
        iconv_close(static_cast<iconv_t>(m_cd));
    }
}

bool IconvOracle::convert(const std::string& input, std::string& output)
{
    if (m_cd == nullptr) {
        return false;
    }
    iconv_t cd = static_cast<iconv_t>(m_cd);
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    output.assign(input.size() * 4 + 16, '\0');
    char* in = const_cast<char*>(input.data());
    size_t inLeft = input.size();
    char* out = &output[0];
    size_t outLeft = output.size();
    bool ok = iconv(cd, &in, &inLeft, &out, &outLeft) != static_cast<size_t>(-1);
    ok = ok && iconv(cd, nullptr, nullptr, &out, &outLeft) != static_cast<size_t>(-1);
    output.resize(output.size() - outLeft);
    return ok;
}

bool IconvOracle::convertMarking(const std::string& input, size_t unitSize, char mark, std::string& output)
{
    if (m_cd == nullptr) {
        return false;
    }
    // One call per element: iconv is quick to refuse a single character but
    // slow to resume after refusing one inside a long input.
    iconv_t cd = static_cast<iconv_t>(m_cd);
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    output.clear();
    char buffer[16];
    for (size_t i = 0; i + unitSize <= input.size(); i += unitSize) {
        char* in = const_cast<char*>(input.data() + i);
        size_t inLeft = unitSize;
        char* out = buffer;
        size_t outLeft = sizeof buffer;
        if (iconv(cd, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1)) {
            if (errno != EILSEQ) {
                return false;
            }
            output += mark;
        } else {
            output.append(buffer, sizeof buffer - outLeft);
        }
    }
    return true;
}

} // namespace charset_test
