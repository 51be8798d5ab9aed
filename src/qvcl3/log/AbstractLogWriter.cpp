#include <qv/log/AbstractLogWriter.h>

#include <qv/core/Exception.h>
#include <qv/lang/Integer32.h>

#include <charconv>
#include <climits>
#include <typeinfo>

namespace qv {
namespace log {

QV_BEGIN_INTERFACE_MAP(AbstractLogWriter)
QV_INTERFACE_ENTRY(AbstractLogWriter, ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

AbstractLogWriter::AbstractLogWriter(io::Writer* writer) : m_writer(writer)
{
    if (!writer)
        throw ResultException(results::INVALIDARG);
}

AbstractLogWriter::~AbstractLogWriter() noexcept(false) = default;

namespace {

// Past this the buffer is given back before the next entry, so that one huge
// entry does not keep its memory for the life of the writer.
constexpr size_t kKeptCapacity = 64 * 1024;

} // namespace

void AbstractLogWriter::process(const ILogEntry* entry)
{
    if (!entry)
        throw ResultException(results::POINTER);
    if (m_text.capacity() > kKeptCapacity)
        std::u16string().swap(m_text);
    m_text.clear();
    appendEntry(entry, m_text);
    const char16_t* units = m_text.data();
    size_t left = m_text.size();
    do {
        const int32_t count = left > static_cast<size_t>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(left);
        m_writer->write(units, count);
        units += count;
        left -= static_cast<size_t>(count);
    } while (left > 0);
    flush();
}

void AbstractLogWriter::appendEntry(const ILogEntry* entry, std::u16string& text)
{
    appendText(format(entry), text);
}

void AbstractLogWriter::appendText(const String& text, std::u16string& to)
{
    to.append(text.getData(), static_cast<size_t>(text.getLength()));
}

void AbstractLogWriter::appendValue(const Object* value, std::u16string& to)
{
    if (!value)
        return;
    // Exact classes only: a derived class may have its own toString(). The
    // addresses of the type_info objects are compared first: they settle the
    // usual cases without comparing the names.
    const std::type_info& type = typeid(*value);
    const bool isString = &type == &typeid(String);
    if (!isString && (&type == &typeid(Integer32) || type == typeid(Integer32))) {
        // The same digits as String::valueOf(long).
        char digits[16];
        const auto end =
            std::to_chars(digits, digits + sizeof digits, static_cast<const Integer32*>(value)->getValue());
        const size_t at = to.size();
        to.resize(at + static_cast<size_t>(end.ptr - digits));
        for (const char* digit = digits; digit != end.ptr; ++digit)
            to[at + static_cast<size_t>(digit - digits)] = static_cast<char16_t>(*digit);
    } else if (isString || type == typeid(String)) {
        appendText(*static_cast<const String*>(value), to);
    } else {
        appendText(value->toString(), to);
    }
}

void AbstractLogWriter::flush()
{
    m_writer->flush();
}

} // namespace log
} // namespace qv
