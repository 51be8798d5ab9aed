// iconv and encodings: text conversion with the command line and the
// messages of glibc's iconv(1), through the library's converters.
#include "Commands.h"

#include <qv/core/Class.h>
#include <qv/io/IoException.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/text/charset/CodecManager.h>
#include <qv/text/charset/EncInfo.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

namespace qvcl {
namespace {

using qv::Reference;
using qv::text::charset::ByteToCharConverter;
using qv::text::charset::CharToByteConverter;
using qv::text::charset::CodecManager;

// Further names of the encodings. The registry cannot list its names, so
// these are the candidates; only those the library confirms are printed.
struct AliasRow {
    const char* canonical;
    const char* alias;
};

const AliasRow kAliases[] = {
    {"ASCII", "ANSI_X3.4-1968"},
    {"ASCII", "ISO-IR-6"},
    {"ASCII", "ANSI_X3.4-1986"},
    {"ASCII", "ISO_646.IRV:1991"},
    {"ASCII", "ISO646-US"},
    {"ASCII", "US-ASCII"},
    {"ASCII", "US"},
    {"ASCII", "IBM367"},
    {"ASCII", "CP367"},
    {"ASCII", "CSASCII"},
    {"ASCII", "646"},
    {"ASCII", "ASCII7"},
    {"ISO8859_1", "ISO_8859-1:1987"},
    {"ISO8859_1", "ISO-IR-100"},
    {"ISO8859_1", "ISO_8859-1"},
    {"ISO8859_1", "ISO-8859-1"},
    {"ISO8859_1", "LATIN1"},
    {"ISO8859_1", "L1"},
    {"ISO8859_1", "IBM819"},
    {"ISO8859_1", "CP819"},
    {"ISO8859_1", "CSISOLATIN1"},
    {"ISO8859_1", "8859_1"},
    {"ISO8859_1", "ISO_8859-1:1978"},
    {"ISO8859_1", "IBM-819"},
    {"ISO8859_1", "819"},
    {"CP437", "IBM437"},
    {"CP437", "437"},
    {"CP437", "CSPC8CODEPAGE437"},
    {"CP437", "IBM-437"},
    {"CP1252", "WINDOWS-1252"},
    {"UTF-8", "UTF8"},
    {"UTF-8", "UTF_8"},
    {"AMP-7", "A7"},
    {"CP932", "WINDOWS-31J"},
    {"CP932", "MS932"},
    {"EUCJP", "EUC-JP"},
    {"EUCJP", "EUC_JP"},
    {"CP1250", "WINDOWS-1250"},
    {"CP1251", "WINDOWS-1251"},
    {"CP1253", "WINDOWS-1253"},
    {"CP1254", "WINDOWS-1254"},
    {"CP1255", "WINDOWS-1255"},
    {"CP1256", "WINDOWS-1256"},
    {"CP1257", "WINDOWS-1257"},
    {"CP1258", "WINDOWS-1258"},
};

// The registry's encodings without a code page of their own.
const char* const kUnicodeEncodings[] = {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE", "AMP-7"};

struct Encoding {
    std::string name;
    uint32_t codePage;
    std::vector<std::string> aliases;
};

const qv::Class* encoderClassOf(const std::string& name)
{
    Reference<qv::text::charset::CodecClasses> classes =
        CodecManager::getInstance()->getCodecClasses(wide(name).getData());
    return classes ? classes->getEncoderClass() : nullptr;
}

bool isAliasOf(const std::string& alias, const Encoding& encoding)
{
    if (encoding.codePage != 0) {
        EncInfo info{};
        if (QVGetEncInfoByName(wide(alias).getData(), &info) == 0 && info.codePage == encoding.codePage)
            return true;
    }
    const qv::Class* aliasClass = encoderClassOf(alias);
    return aliasClass && aliasClass == encoderClassOf(encoding.name);
}

std::vector<Encoding> listEncodings()
{
    std::vector<Encoding> encodings;
    uint32_t count = 0;
    QVEnumerateEncInfo(&count, nullptr);
    std::vector<EncInfo> records(count);
    if (count > 0 && QVEnumerateEncInfo(&count, records.data()) == 0) {
        for (const EncInfo& record : records)
            encodings.push_back({narrow(qv::String(record.name)), record.codePage, {}});
    }
    for (const char* name : kUnicodeEncodings) {
        if (encoderClassOf(name))
            encodings.push_back({name, 0, {}});
    }
    for (Encoding& encoding : encodings) {
        for (const AliasRow& row : kAliases) {
            if (encoding.name == row.canonical && isAliasOf(row.alias, encoding))
                encoding.aliases.push_back(row.alias);
        }
    }
    return encodings;
}

// glibc names come with "//" suffixes: "//IGNORE" omits what cannot be
// converted; an empty suffix changes nothing. Anything else is refused by
// leaving the suffix on the name.
std::string encodingName(std::string name, bool& ignore)
{
    const size_t slashes = name.find("//");
    if (slashes == std::string::npos)
        return name;
    std::string suffix = name.substr(slashes + 2);
    std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::toupper(c); });
    if (suffix.empty() || suffix == "IGNORE") {
        ignore = ignore || !suffix.empty();
        return name.substr(0, slashes);
    }
    return name;
}

class ConversionFailed {};

// The pipeline for one pair of encodings: bytes to UTF-16 units to bytes, a
// megabyte at a time. On an error it finds the input byte where the
// offending character starts, as iconv reports it.
class Conversion {
public:
    Conversion(const std::string& command, const std::string& from, const std::string& to, bool omitInvalid)
        : m_command(command), m_omitInvalid(omitInvalid)
    {
        m_decoder = from.empty() ? ByteToCharConverter::getDefaultConverter()
                                 : ByteToCharConverter::getConverter(wide(from).getData());
        m_encoder = CharToByteConverter::getConverter(wide(to).getData());
        // The converters substitute by default; iconv stops instead.
        m_decoder->setSubstitutionMode(omitInvalid);
        m_encoder->setSubstitutionMode(omitInvalid);
        if (omitInvalid) {
            const char16_t noChars[1] = {0};
            const signed char noBytes[1] = {0};
            m_decoder->setSubstitutionChars(noChars, 0);
            m_encoder->setSubstitutionBytes(noBytes, 0);
        }
        const std::string decoderName = narrow(qv::String(m_decoder->getEncodingName()));
        m_unitSize = decoderName.compare(0, 6, "UTF-16") == 0 ? 2 : decoderName.compare(0, 6, "UTF-32") == 0 ? 4 : 0;
        m_utf8 = decoderName == "UTF-8";
        m_in.resize(HISTORY + CHUNK);
        m_units.resize(CHUNK + 16);
        m_out.resize(static_cast<size_t>(m_units.size()) * m_encoder->getMaxBytesPerChar() + 64);
    }

    // Converts one input to the output; false after an error was reported.
    // Write errors escape as qv::Exception.
    bool run(Input& input, Output& output)
    {
        m_output = &output;
        m_decoder->reset();
        m_encoder->reset();
        int32_t history = 0;
        for (;;) {
            const int64_t base = input.position();
            const int32_t n = input.read(m_in.data() + HISTORY, CHUNK);
            if (n == 0)
                break;
            int32_t pos = HISTORY;
            const int32_t end = HISTORY + n;
            while (pos < end) {
                if (!decodeFrom(base, history, pos, end))
                    return false;
            }
            // The last bytes stay for the look back over a split character.
            std::copy(m_in.data() + end - std::min(n, HISTORY), m_in.data() + end,
                      m_in.data() + HISTORY - std::min(n, HISTORY));
            history = std::min(HISTORY, history + n);
        }
        int32_t count = 0;
        try {
            while (m_decoder->flush(m_units.data(), &count, static_cast<int32_t>(m_units.size())) > 0) {
            }
        } catch (const qv::Exception&) {
            encode(count, 0);
            fail("incomplete character or shift sequence at end of buffer");
            return false;
        }
        if (!encode(count, input.position()))
            return false;
        int32_t written = 0;
        while (m_encoder->flush(m_out.data(), &written, static_cast<int32_t>(m_out.size())) > 0) {
        }
        m_output->write(m_out.data(), written);
        return true;
    }

private:
    static constexpr int32_t CHUNK = IO_BUFFER_SIZE;
    // Bytes of the previous chunk kept in front of the current one.
    static constexpr int32_t HISTORY = 4;

    void fail(const std::string& message) { report(m_command, message); }

    // How many bytes before pos belong to a character the decoder holds
    // unfinished (pos is at an offset where a call starts).
    int32_t pending(int64_t offset, int32_t history, int32_t pos) const
    {
        if (m_unitSize)
            return static_cast<int32_t>(offset % m_unitSize);
        if (!m_utf8)
            return 0;
        const int32_t available = std::min(3, pos - HISTORY + history);
        for (int32_t k = 1; k <= available; ++k) {
            const unsigned char byte = static_cast<unsigned char>(m_in[pos - k]);
            if ((byte & 0xC0) == 0x80)
                continue;
            const int length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
            return length > k ? k : 0;
        }
        return 0;
    }

    // Decodes in[pos, end) and passes the units on. After malformed input it
    // finds the offending sequence byte by byte; with -c it skips it and
    // returns so the caller goes on from the new pos.
    bool decodeFrom(int64_t base, int32_t history, int32_t& pos, int32_t end)
    {
        const int32_t callStart = pos;
        const int64_t callOffset = base + (callStart - HISTORY);
        int64_t sequenceStart = callOffset - pending(callOffset, history, callStart);
        int32_t count = 0;
        bool decoded = false;
        try {
            m_decoder->convert(m_in.data(), &pos, end, m_units.data(), &count, static_cast<int32_t>(m_units.size()));
            decoded = true;
        } catch (const qv::Exception&) {
            // Positions and state are as before the call.
        }
        // A decoder that took nothing and said nothing would never get
        // further; the byte-by-byte path below names the place.
        if (decoded && (pos > callStart || count > 0))
            return encode(count, sequenceStart);
        pos = callStart;
        const int64_t batchStart = sequenceStart;
        count = 0;
        while (pos < end) {
            int32_t next = pos;
            const int32_t before = count;
            try {
                m_decoder->convert(m_in.data(), &next, pos + 1, m_units.data(), &count,
                                   static_cast<int32_t>(m_units.size()));
            } catch (const qv::Exception&) {
                if (!encode(count, batchStart))
                    return false;
                if (!m_omitInvalid) {
                    fail("illegal input sequence at position " + std::to_string(sequenceStart));
                    return false;
                }
                m_decoder->reset();
                const int64_t errorOffset = base + (pos - HISTORY);
                const int64_t resume =
                    m_unitSize ? sequenceStart + m_unitSize : std::max(sequenceStart + 1, errorOffset);
                pos = static_cast<int32_t>(std::min<int64_t>(std::max<int64_t>(resume - base + HISTORY, HISTORY), end));
                return true;
            }
            if (next == pos) {
                encode(count, batchStart);
                fail("illegal input sequence at position " + std::to_string(sequenceStart));
                return false;
            }
            if (count > before)
                sequenceStart = base + (next - HISTORY);
            pos = next;
        }
        return encode(count, batchStart);
    }

    // The bytes the source encoding spends on units[0, count).
    int64_t sourceLength(int32_t count)
    {
        Reference<CharToByteConverter> source = CharToByteConverter::getConverter(m_decoder->getEncodingName());
        std::vector<signed char> bytes(static_cast<size_t>(count) * source->getMaxBytesPerChar() + 16);
        int32_t in = 0, out = 0;
        source->convert(m_units.data(), &in, count, bytes.data(), &out, static_cast<int32_t>(bytes.size()));
        return out;
    }

    // Encodes units[0, count), which start at input offset origin, and writes
    // them out; reports a character the target cannot represent.
    bool encode(int32_t count, int64_t origin)
    {
        const int32_t capacity = static_cast<int32_t>(m_out.size());
        int32_t pos = 0;
        while (pos < count) {
            int32_t written = 0;
            const int32_t start = pos;
            try {
                m_encoder->convert(m_units.data(), &pos, count, m_out.data(), &written, capacity);
                m_output->write(m_out.data(), written);
                if (pos > start || written > 0)
                    continue;
            } catch (const qv::text::charset::UnmappableCharacterException&) {
            } catch (const qv::text::charset::InvalidCharacterException&) {
            }
            // Character by character up to the one that fails, so the
            // output ends where iconv's would.
            written = 0;
            for (;;) {
                const bool pair = m_units[pos] >= 0xD800 && m_units[pos] < 0xDC00 && pos + 1 < count;
                int32_t next = pos;
                try {
                    m_encoder->convert(m_units.data(), &next, pos + (pair ? 2 : 1), m_out.data(), &written, capacity);
                } catch (const qv::Exception&) {
                    break;
                }
                if (next == pos)
                    break;
                pos = next;
                if (written > capacity - 64) {
                    m_output->write(m_out.data(), written);
                    written = 0;
                }
            }
            m_output->write(m_out.data(), written);
            int64_t offset = origin;
            try {
                offset += sourceLength(pos);
            } catch (const qv::Exception&) {
                // Only the start of the block can be named then.
            }
            fail("illegal input sequence at position " + std::to_string(offset));
            return false;
        }
        return true;
    }

    std::string m_command;
    bool m_omitInvalid;
    int m_unitSize = 0;
    bool m_utf8 = false;
    Reference<ByteToCharConverter> m_decoder;
    Reference<CharToByteConverter> m_encoder;
    std::vector<signed char> m_in;
    std::vector<char16_t> m_units;
    std::vector<signed char> m_out;
    Output* m_output = nullptr;
};

bool knownEncoding(const std::string& name, bool encoder)
{
    try {
        if (encoder)
            CharToByteConverter::getConverter(wide(name).getData());
        else
            ByteToCharConverter::getConverter(wide(name).getData());
        return true;
    } catch (const qv::Exception&) {
        return false;
    }
}

} // namespace

int runIconv(Arguments& arguments, int argc, char** argv)
{
    qv::util::CmdLineParser& parser = arguments.parser();
    parser.addOption(u'f', u"from-code", true, u"encoding of the input (default: the locale's)", u"NAME");
    parser.addOption(u't', u"to-code", true, u"encoding of the output (default: the locale's)", u"NAME");
    parser.addOption(u'c', qv::String(), false, u"omit invalid characters from the output");
    parser.addOption(u'o', u"output", true, u"write to FILE (whole or not at all) instead of standard output", u"FILE");
    parser.addOption(u'l', u"list", false, u"list the known encodings");
    parser.addOption(u's', u"silent", false, u"accepted for compatibility");
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    if (arguments.isSet(u"list")) {
        for (const Encoding& encoding : listEncodings()) {
            std::printf("%s//\n", encoding.name.c_str());
            for (const std::string& alias : encoding.aliases)
                std::printf("%s//\n", alias.c_str());
        }
        return EXIT_OK;
    }
    bool omitInvalid = arguments.isSet(u"c");
    const std::string fromGiven = arguments.value(u"from-code");
    const std::string toGiven = arguments.value(u"to-code");
    const std::string from = encodingName(fromGiven, omitInvalid);
    std::string to = encodingName(toGiven, omitInvalid);
    if (to.empty())
        to = narrow(qv::String(CharToByteConverter::getDefaultConverter()->getEncodingName()));
    const bool fromWrong = !from.empty() && !knownEncoding(from, false);
    const bool toWrong = !knownEncoding(to, true);
    if (fromWrong && toWrong) {
        report(arguments.command(), "conversions from `" + fromGiven + "' and to `" + toGiven + "' are not supported");
        return EXIT_ERROR;
    }
    if (fromWrong || toWrong) {
        report(arguments.command(), fromWrong ? "conversion from `" + fromGiven + "' is not supported"
                                              : "conversion to `" + toGiven + "' is not supported");
        return EXIT_ERROR;
    }

    Conversion conversion(arguments.command(), from, to, omitInvalid);
    const std::string outputName = arguments.value(u"output");
    std::unique_ptr<Output> output;
    try {
        output.reset(new Output(outputName));
    } catch (const qv::Exception& error) {
        report(arguments.command(), "cannot open output file `" + outputName + "': " + reason(error, outputName));
        return EXIT_ERROR;
    }
    std::vector<std::string> files = arguments.positional();
    if (files.empty())
        files.push_back("-");
    int status = EXIT_OK;
    try {
        for (const std::string& file : files) {
            std::unique_ptr<Input> input;
            try {
                input.reset(new Input(file));
            } catch (const qv::Exception& error) {
                report(arguments.command(), "cannot open input file `" + file + "': " + reason(error, file));
                status = EXIT_ERROR;
                continue;
            }
            try {
                if (!conversion.run(*input, *output))
                    return EXIT_ERROR;
            } catch (const qv::io::IoException& error) {
                // Read errors name the input; write errors are the output's.
                const std::string message = narrow(error.getDescription());
                if (message.compare(0, 17, "cannot read file:") == 0) {
                    report(arguments.command(), "error while reading the input: " + reason(error, file));
                    return EXIT_ERROR;
                }
                throw;
            }
        }
        if (status != EXIT_OK)
            return status;
        output->commit();
    } catch (const qv::io::IoException& error) {
        report(arguments.command(),
               "conversion stopped due to problem in writing the output: " + reason(error, outputName));
        return EXIT_ERROR;
    }
    return EXIT_OK;
}

int runEncodings(Arguments& arguments, int argc, char** argv)
{
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    if (!arguments.positional().empty())
        throw UsageError{"no arguments expected"};
    std::printf("%-10s %9s  %s\n", "ENCODING", "CODE PAGE", "ALIASES");
    for (const Encoding& encoding : listEncodings()) {
        std::string aliases;
        for (const std::string& alias : encoding.aliases)
            aliases += (aliases.empty() ? "" : " ") + alias;
        const std::string codePage = encoding.codePage ? std::to_string(encoding.codePage) : "-";
        std::printf("%-10s %9s  %s\n", encoding.name.c_str(), codePage.c_str(), aliases.c_str());
    }
    return EXIT_OK;
}

} // namespace qvcl
