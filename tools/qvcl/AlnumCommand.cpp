// alnum: the library's five-bits-per-character text, wrapped like base32 -w.
#include "Commands.h"

#include <qv/io/AlphaNumInputStream.h>
#include <qv/io/AlphaNumOutputStream.h>
#include <qv/io/InputStream.h>
#include <qv/io/IoException.h>
#include <qv/io/NullOutputStream.h>
#include <qv/io/OutputStream.h>
#include <qv/text/charset/CharsetExceptions.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace qvcl {
namespace {

// Breaks the encoded text into lines of a fixed width on its way out,
// through a buffer of its own: a line is a few dozen bytes, too little for
// a call each.
class LineWrapper : public qv::io::OutputStream {
public:
    LineWrapper(Output& output, int64_t width) : m_output(output), m_width(width), m_buffer(IO_BUFFER_SIZE) {}

    using qv::io::OutputStream::write;
    void write(const signed char* buffer, int32_t count) override
    {
        while (count > 0) {
            if (m_used + 2 > static_cast<int64_t>(m_buffer.size()))
                drain();
            int64_t room = static_cast<int64_t>(m_buffer.size()) - m_used - 1;
            if (m_width != 0)
                room = std::min(room, m_width - m_column);
            const int32_t n = static_cast<int32_t>(std::min<int64_t>(room, count));
            std::memcpy(m_buffer.data() + m_used, buffer, static_cast<size_t>(n));
            m_used += n;
            buffer += n;
            count -= n;
            m_column += n;
            if (m_column == m_width) {
                m_buffer[static_cast<size_t>(m_used++)] = '\n';
                m_column = 0;
            }
        }
    }

    // The last line ends with a line feed, as base32's does; unwrapped text
    // gets none.
    void finish()
    {
        if (m_width != 0 && m_column != 0)
            m_buffer[static_cast<size_t>(m_used++)] = '\n';
        drain();
    }

private:
    void drain()
    {
        m_output.write(m_buffer.data(), static_cast<int32_t>(m_used));
        m_used = 0;
    }

    Output& m_output;
    int64_t m_width;
    int64_t m_column = 0;
    std::vector<signed char> m_buffer;
    int64_t m_used = 0;
};

// Hands the decoder the text without its line ends and counts the
// characters, from which the exact byte count follows.
class LineEndFilter : public qv::io::InputStream {
public:
    explicit LineEndFilter(Input& input) : m_input(input) {}

    using qv::io::InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override
    {
        if (count < 1)
            return 0;
        for (;;) {
            const int32_t n = m_input.read(buffer, count);
            if (n == 0)
                return -1;
            int32_t kept = 0;
            for (int32_t i = 0; i < n; ++i) {
                if (buffer[i] != '\n' && buffer[i] != '\r')
                    buffer[kept++] = buffer[i];
            }
            if (kept > 0) {
                m_characters += kept;
                return kept;
            }
        }
    }

    int64_t characters() const { return m_characters; }

private:
    Input& m_input;
    int64_t m_characters = 0;
};

class InvalidInput {};

void encode(Input& input, Output& output, int64_t width, const char16_t* alphabet)
{
    qv::Reference<LineWrapper> wrapper(new LineWrapper(output, width));
    qv::Reference<qv::io::AlphaNumOutputStream> encoder(new qv::io::AlphaNumOutputStream(wrapper.get(), alphabet));
    std::vector<signed char> buffer(IO_BUFFER_SIZE / 2);
    for (;;) {
        const int32_t n = input.read(buffer.data(), static_cast<int32_t>(buffer.size()));
        if (n == 0)
            break;
        encoder->write(buffer.data(), n);
    }
    encoder->flush();
    wrapper->finish();
}

void decode(Input& input, Output& output, const char16_t* alphabet)
{
    qv::Reference<LineEndFilter> filter(new LineEndFilter(input));
    qv::Reference<qv::io::AlphaNumInputStream> decoder(new qv::io::AlphaNumInputStream(filter.get(), alphabet));
    std::vector<signed char> buffer(IO_BUFFER_SIZE / 2);
    // The stream adds a zero byte when the text ends inside a group: the
    // last byte waits until the character count says whether it is real.
    int64_t produced = 0;
    bool holding = false;
    signed char held = 0;
    for (;;) {
        int32_t n;
        try {
            n = decoder->read(buffer.data(), static_cast<int32_t>(buffer.size()));
        } catch (const qv::text::charset::InvalidCharacterException&) {
            throw InvalidInput();
        }
        if (n <= 0)
            break;
        if (holding)
            output.put(reinterpret_cast<const char*>(&held), 1);
        output.put(reinterpret_cast<const char*>(buffer.data()), static_cast<size_t>(n - 1));
        held = buffer[n - 1];
        holding = true;
        produced += n;
    }
    const int64_t characters = filter->characters();
    // 1, 3 and 6 characters in a last group are no whole number of bytes.
    const int64_t tail = characters % 8;
    if (tail == 1 || tail == 3 || tail == 6)
        throw InvalidInput();
    const int64_t exact = characters / 8 * 5 + tail * 5 / 8;
    if (holding && produced == exact)
        output.put(reinterpret_cast<const char*>(&held), 1);
}

} // namespace

int runAlnum(Arguments& arguments, int argc, char** argv)
{
    qv::util::CmdLineParser& parser = arguments.parser();
    parser.addOption(u'd', u"decode", false, u"decode (line ends are ignored)");
    parser.addOption(u'w', u"wrap", true, u"wrap encoded lines after COLS characters (default 76, 0: no wrapping)",
                     u"COLS");
    parser.addOption(0, u"alphabet", true, u"the 32 characters to use (default ABCDEFGHJKLMNPQRSTUVWXYZ23456789)",
                     u"ALPHABET");
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    std::vector<std::string> files = arguments.positional();
    if (files.size() > 1)
        throw UsageError{"extra operand '" + files[1] + "'"};
    const std::string file = files.empty() ? "-" : files[0];
    int64_t width = 76;
    if (arguments.isSet(u"wrap")) {
        const std::string text = arguments.value(u"wrap");
        char* end = nullptr;
        width = std::strtoll(text.c_str(), &end, 10);
        if (text.empty() || *end != 0 || width < 0)
            throw UsageError{"invalid wrap size: '" + text + "'"};
    }
    const qv::String alphabetText = wide(arguments.value(u"alphabet"));
    const char16_t* alphabet = arguments.isSet(u"alphabet") ? alphabetText.getData() : nullptr;
    // The streams check the alphabet; a bad one is a usage error, found
    // before any file is touched.
    try {
        qv::Reference<qv::io::AlphaNumOutputStream> probe(
            new qv::io::AlphaNumOutputStream(new qv::io::NullOutputStream(), alphabet));
    } catch (const qv::Exception& error) {
        throw UsageError{narrow(error.getDescription())};
    }
    // The streams take repeats and wide characters; text written with such
    // an alphabet would not decode to what went in.
    if (alphabet) {
        bool seen[256] = {};
        for (const char16_t* c = alphabet; *c; ++c) {
            if (*c > 0xFF || seen[*c])
                throw UsageError{"alphabet must be 32 distinct characters from U+0001 to U+00FF"};
            seen[*c] = true;
        }
    }

    std::unique_ptr<Input> input;
    try {
        input.reset(new Input(file));
    } catch (const qv::Exception& error) {
        report(arguments.command(), file + ": " + reason(error, file));
        return EXIT_ERROR;
    }
    Output output("");
    try {
        if (arguments.isSet(u"decode"))
            decode(*input, output, alphabet);
        else
            encode(*input, output, width, alphabet);
        output.commit();
    } catch (const InvalidInput&) {
        output.flush();
        report(arguments.command(), input->displayName() + ": invalid input");
        return EXIT_ERROR;
    } catch (const qv::io::IoException& error) {
        const std::string message = narrow(error.getDescription());
        if (message.compare(0, 17, "cannot read file:") == 0)
            report(arguments.command(), file + ": " + reason(error, file));
        else
            report(arguments.command(), "write error: " + reason(error, ""));
        return EXIT_ERROR;
    }
    return EXIT_OK;
}

} // namespace qvcl
