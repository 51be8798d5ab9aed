// BufferedReader.readLine over InputStreamReader over bytes that arrive in
// runs of random length: the lines agree with a plain splitter over the same
// text read in one piece, a fault is met at the same place by both, and its
// message names the byte offset.

#include "FuzzSupport.h"

#include <random>

namespace {

const char16_t* const kEncodings[] = {u"UTF-8",    u"UTF-16LE", u"UTF-16BE", u"CP932",
                                      u"UTF-32LE", u"EUCJP",    u"AMP-7",    u"CP1252"};

// Bytes handed out in runs of 1..maxRun.
class RunStream : public qv::io::InputStream {
public:
    RunStream(const std::string& bytes, uint32_t seed, int maxRun) : m_bytes(bytes), m_random(seed), m_maxRun(maxRun) {}
    using qv::io::InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override
    {
        if (count < 1)
            return 0;
        if (m_pos >= m_bytes.size())
            return -1;
        size_t run = std::uniform_int_distribution<size_t>(1, static_cast<size_t>(m_maxRun))(m_random);
        run = std::min({run, static_cast<size_t>(count), m_bytes.size() - m_pos});
        std::memcpy(buffer, m_bytes.data() + m_pos, run);
        m_pos += run;
        return static_cast<int32_t>(run);
    }

private:
    std::string m_bytes;
    size_t m_pos = 0;
    std::mt19937 m_random;
    int m_maxRun;
};

std::vector<std::u16string> splitLines(const std::u16string& text)
{
    std::vector<std::u16string> lines;
    std::u16string current;
    bool open = false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' || text[i] == u'\n') {
            lines.push_back(current);
            current.clear();
            open = false;
            if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
        } else {
            current += text[i];
            open = true;
        }
    }
    if (open)
        lines.push_back(current);
    return lines;
}

struct Outcome {
    std::u16string text;               // everything handed out
    std::vector<std::u16string> lines; // readLine only
    std::string fault;                 // the exception's class and message
};

template <class Body>
std::string faultOf(Body&& body)
{
    try {
        body();
    } catch (const qv::text::charset::InvalidCharacterException& e) {
        return "invalid: " + e.getDescription().toUtf8();
    } catch (const qv::text::charset::UnmappableCharacterException& e) {
        return "unmappable: " + e.getDescription().toUtf8();
    }
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qv;
    using namespace qv::io;
    fuzz::Reader options(data, size);
    const char16_t* encoding = kEncodings[options.byte() % 8];
    const uint8_t flags = options.byte();
    const bool substitute = (flags & 1) != 0;
    const int32_t bufferSize = 1 + options.byte() % 64;
    const int maxRun = 1 + options.byte() % 32;
    const std::string bytes = fuzz::asBytes(options);

    // The reference: the whole text in large reads.
    Outcome whole;
    {
        auto stream = makeReference<RunStream>(bytes, 1, 1 << 20);
        auto reader = makeReference<InputStreamReader>(stream.get(), encoding);
        reader->getDecoder()->setSubstitutionMode(substitute);
        whole.fault = faultOf([&] {
            char16_t units[4096];
            for (int32_t n; (n = reader->read(units, 4096)) != -1;) {
                fuzz::check(n > 0, "a read returned nothing");
                whole.text.append(units, static_cast<size_t>(n));
            }
        });
    }

    Outcome lines;
    {
        auto stream = makeReference<RunStream>(bytes, flags, maxRun);
        auto decoder = makeReference<InputStreamReader>(stream.get(), encoding);
        decoder->getDecoder()->setSubstitutionMode(substitute);
        auto reader = makeReference<BufferedReader>(decoder.get(), bufferSize);
        lines.fault = faultOf([&] {
            String line;
            while (reader->readLine(line)) {
                std::u16string units = line.toU16String();
                fuzz::check(units.find_first_of(u"\r\n") == std::u16string::npos, "a line holds a line end");
                lines.lines.push_back(units);
            }
        });
    }

    fuzz::check(whole.fault == lines.fault, "split and whole reads meet different faults");
    if (!whole.fault.empty())
        fuzz::check(whole.fault.find(" at byte offset ") != std::string::npos, "a fault without its offset");
    std::vector<std::u16string> expected = splitLines(whole.text);
    // A fault cuts the line it falls into short: readLine never returns it.
    if (!whole.fault.empty() && !whole.text.empty() && whole.text.back() != u'\r' && whole.text.back() != u'\n')
        expected.pop_back();
    fuzz::check(expected == lines.lines, "readLine disagrees with the reference splitter");
    return 0;
}
