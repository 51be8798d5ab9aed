#include <qv/util/PropertySet.h>

#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/lang/Boolean.h>
#include <qv/lang/Double.h>
#include <qv/lang/Float.h>
#include <qv/lang/Integer16.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/Integer64.h>
#include <qv/lang/Integer8.h>
#include <qv/lang/Number.h>
#include <qv/lang/UInteger16.h>
#include <qv/lang/UInteger32.h>
#include <qv/lang/UInteger64.h>
#include <qv/lang/UInteger8.h>
#include <qv/util/PropertiesFormat.h>

#include "util/FileContent.h"
#include "util/StrictNumber.h"

#include <cmath>
#include <limits>

namespace qv {
namespace util {

namespace {

typedef std::vector<std::pair<String, Reference<Object>>> Values;

[[noreturn]] void refuse(const String& name, const char16_t* wanted)
{
    throw CastFailedException(String(u"property ").append(name).append(u" is not ").append(wanted));
}

// The type names the XML form writes: the class name without "qv::".
String typeName(const Object& value)
{
    const Class* type = value.getClass();
    String name(type ? type->getName() : u"String");
    if (name.startsWith(String(u"qv::")))
        name.remove(0, 4);
    return name;
}

template <class Boxed, class Wide>
Reference<Object> boxedInRange(const String& text, bool& ok)
{
    Wide value{};
    ok = detail::parseStrict(text, value) &&
         value >= static_cast<Wide>(std::numeric_limits<typename Boxed::ValueType>::min()) &&
         value <= static_cast<Wide>(std::numeric_limits<typename Boxed::ValueType>::max());
    return ok ? Reference<Object>(new Boxed(static_cast<typename Boxed::ValueType>(value))) : Reference<Object>();
}

Reference<Object> makeValue(const String& type, const String& text, bool& ok)
{
    ok = true;
    if (type.equals(u"String"))
        return Reference<Object>(new String(text));
    if (type.equals(u"Boolean")) {
        ok = text.equals(u"true") || text.equals(u"false");
        return Reference<Object>(new Boolean(text.equals(u"true")));
    }
    if (type.equals(u"Integer8"))
        return boxedInRange<Integer8, int64_t>(text, ok);
    if (type.equals(u"Integer16"))
        return boxedInRange<Integer16, int64_t>(text, ok);
    if (type.equals(u"Integer32"))
        return boxedInRange<Integer32, int64_t>(text, ok);
    if (type.equals(u"Integer64"))
        return boxedInRange<Integer64, int64_t>(text, ok);
    if (type.equals(u"UInteger8"))
        return boxedInRange<UInteger8, uint64_t>(text, ok);
    if (type.equals(u"UInteger16"))
        return boxedInRange<UInteger16, uint64_t>(text, ok);
    if (type.equals(u"UInteger32"))
        return boxedInRange<UInteger32, uint64_t>(text, ok);
    if (type.equals(u"UInteger64"))
        return boxedInRange<UInteger64, uint64_t>(text, ok);
    double value = 0;
    ok = detail::parseStrict(text, value);
    if (type.equals(u"Double"))
        return Reference<Object>(new Double(value));
    if (type.equals(u"Float"))
        return Reference<Object>(new Float(static_cast<float>(value)));
    ok = false;
    return Reference<Object>();
}

void appendXmlEscaped(String& out, const String& text)
{
    const int32_t length = text.getLength();
    for (int32_t i = 0; i < length; ++i) {
        const char16_t c = text.getCharAt(i);
        switch (c) {
        case u'&': out.append(u"&amp;"); break;
        case u'<': out.append(u"&lt;"); break;
        case u'>': out.append(u"&gt;"); break;
        case u'"': out.append(u"&quot;"); break;
        default:
            if (c < 0x20)
                out.append(u"&#").append(String::valueOf(static_cast<int>(c))).append(u';');
            else
                out.append(c);
        }
    }
}

// Reads the one document shape storeXml writes (declaration and comments
// allowed); anything else names the line where it went wrong.
class XmlReader {
public:
    XmlReader(const String& text, const String& source) : m_text(text), m_source(source) {}

    Values read()
    {
        Values values;
        skipMisc();
        expect(u"<properties>");
        for (;;) {
            skipMisc();
            if (accept(u"</properties>"))
                break;
            expect(u"<property");
            String name;
            String type;
            bool haveName = false;
            bool haveType = false;
            for (;;) {
                skipSpace();
                if (accept(u"/>") || accept(u">"))
                    break;
                const String attribute = readName();
                skipSpace();
                expect(u"=");
                skipSpace();
                const String value = readQuoted();
                if (attribute.equals(u"name") && !haveName) {
                    name = value;
                    haveName = true;
                } else if (attribute.equals(u"type") && !haveType) {
                    type = value;
                    haveType = true;
                } else {
                    fail(String(u"unexpected attribute"));
                }
            }
            if (!haveName)
                fail(String(u"property without a name"));
            String content;
            if (m_text.getCharAt(m_position - 2) != u'/') {
                content = readText();
                expect(u"</property>");
            }
            bool ok = false;
            Reference<Object> value = makeValue(haveType ? type : String(u"String"), content, ok);
            if (!ok)
                fail(String(u"value does not fit its type"));
            values.emplace_back(name, value);
        }
        skipMisc();
        if (m_position < m_text.getLength())
            fail(String(u"text after the document"));
        return values;
    }

private:
    [[noreturn]] void fail(const String& problem)
    {
        int32_t line = 1;
        for (int32_t i = 0; i < m_position && i < m_text.getLength(); ++i)
            line += m_text.getCharAt(i) == u'\n';
        throw PropertiesFormatException(m_source, line, problem);
    }
    bool accept(const char16_t* token)
    {
        const String expected(token);
        if (!m_text.regionMatches(m_position, expected.getLength(), expected))
            return false;
        m_position += expected.getLength();
        return true;
    }
    void expect(const char16_t* token)
    {
        if (!accept(token))
            fail(String(u"expected ").append(token));
    }
    void skipSpace()
    {
        while (m_position < m_text.getLength()) {
            const char16_t c = m_text.getCharAt(m_position);
            if (c != u' ' && c != u'\t' && c != u'\n' && c != u'\r')
                return;
            ++m_position;
        }
    }
    void skipMisc()
    {
        for (;;) {
            skipSpace();
            if (accept(u"<?")) {
                skipPast(u"?>");
            } else if (accept(u"<!--")) {
                skipPast(u"-->");
            } else {
                return;
            }
        }
    }
    void skipPast(const char16_t* end)
    {
        const int32_t found = m_text.indexOf(String(end), m_position);
        if (found < 0)
            fail(String(u"unterminated markup"));
        m_position = found + String(end).getLength();
    }
    String readName()
    {
        const int32_t start = m_position;
        while (m_position < m_text.getLength()) {
            const char16_t c = m_text.getCharAt(m_position);
            if (!((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z')))
                break;
            ++m_position;
        }
        if (m_position == start)
            fail(String(u"expected an attribute"));
        return m_text.substring(start, m_position);
    }
    String readQuoted()
    {
        if (m_position >= m_text.getLength())
            fail(String(u"expected a quoted value"));
        const char16_t quote = m_text.getCharAt(m_position);
        if (quote != u'"' && quote != u'\'')
            fail(String(u"expected a quoted value"));
        ++m_position;
        String value = readUntil(quote);
        ++m_position;
        return value;
    }
    String readText() { return readUntil(u'<'); }
    String readUntil(char16_t end)
    {
        String out;
        for (;;) {
            if (m_position >= m_text.getLength())
                fail(String(u"unexpected end of the document"));
            const char16_t c = m_text.getCharAt(m_position);
            if (c == end)
                return out;
            if (c == u'<')
                fail(String(u"unexpected '<'"));
            if (c == u'&')
                out.append(readEntity());
            else {
                out.append(c);
                ++m_position;
            }
        }
    }
    char16_t readEntity()
    {
        static const struct {
            const char16_t* name;
            char16_t value;
        } named[] = {{u"&amp;", u'&'}, {u"&lt;", u'<'}, {u"&gt;", u'>'}, {u"&quot;", u'"'}, {u"&apos;", u'\''}};
        for (const auto& entity : named) {
            if (accept(entity.name))
                return entity.value;
        }
        if (!accept(u"&#"))
            fail(String(u"unknown entity"));
        const bool hex = accept(u"x");
        uint32_t value = 0;
        int32_t digits = 0;
        while (m_position < m_text.getLength() && digits < 6) {
            const char16_t c = m_text.getCharAt(m_position);
            int digit = c >= u'0' && c <= u'9' ? c - u'0' : -1;
            if (hex && digit < 0 && ((c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F')))
                digit = (c | 0x20) - u'a' + 10;
            if (digit < 0)
                break;
            value = value * (hex ? 16 : 10) + static_cast<uint32_t>(digit);
            ++digits;
            ++m_position;
        }
        if (digits == 0 || value > 0xFFFF || !accept(u";"))
            fail(String(u"bad character reference"));
        return static_cast<char16_t>(value);
    }

    String m_text;
    String m_source;
    int32_t m_position = 0;
};

String utf8Text(const std::string& bytes)
{
    return String(bytes.data(), static_cast<int32_t>(bytes.size()), u"UTF-8");
}

std::string utf8Bytes(const String& text)
{
    return text.toUtf8();
}

} // namespace

PropertySet::PropertySet() = default;

PropertySet::PropertySet(const PropertySet& other) : Object(), m_properties(), m_index(other.m_index)
{
    for (const Reference<Property>& property : other.m_properties)
        m_properties.push_back(Reference<Property>(new Property(*property)));
}

PropertySet& PropertySet::operator=(const PropertySet& other)
{
    if (this != &other) {
        PropertySet copy(other);
        m_properties.swap(copy.m_properties);
        m_index.swap(copy.m_index);
    }
    return *this;
}

PropertySet::~PropertySet() = default;

void PropertySet::notify(const String& name, const Object* oldValue, const Object* newValue)
{
    // A copy, so that a listener may remove itself.
    const std::vector<IPropertyChangeListener*> listeners = m_listeners;
    for (IPropertyChangeListener* listener : listeners)
        listener->propertyChanged(name, oldValue, newValue);
}

void PropertySet::setProperty(const String& name, const Reference<Object>& value)
{
    if (!value) {
        remove(name);
        return;
    }
    auto found = m_index.find(name);
    if (found != m_index.end()) {
        Reference<Property> property = m_properties[found->second];
        Reference<Object> old = property->getValue();
        property->setValue(value);
        notify(name, old.get(), value.get());
        return;
    }
    Reference<Property> property(new Property(name, value));
    m_properties.reserve(m_properties.size() + 1);
    m_index.emplace(name, m_properties.size());
    m_properties.push_back(property);
    notify(name, nullptr, value.get());
}

void PropertySet::setString(const String& name, const String& value)
{
    setProperty(name, Reference<Object>(new String(value)));
}

void PropertySet::setInt(const String& name, int32_t value)
{
    setProperty(name, Reference<Object>(new Integer32(value)));
}

void PropertySet::setInt64(const String& name, int64_t value)
{
    setProperty(name, Reference<Object>(new Integer64(value)));
}

void PropertySet::setDouble(const String& name, double value)
{
    setProperty(name, Reference<Object>(new Double(value)));
}

void PropertySet::setBool(const String& name, bool value)
{
    setProperty(name, Reference<Object>(new Boolean(value)));
}

Reference<Object> PropertySet::getProperty(const String& name) const
{
    auto found = m_index.find(name);
    return found == m_index.end() ? Reference<Object>() : m_properties[found->second]->getValue();
}

bool PropertySet::contains(const String& name) const
{
    return m_index.count(name) != 0;
}

bool PropertySet::remove(const String& name)
{
    auto found = m_index.find(name);
    if (found == m_index.end())
        return false;
    const size_t position = found->second;
    Reference<Property> property = m_properties[position];
    m_index.erase(found);
    m_properties.erase(m_properties.begin() + static_cast<std::ptrdiff_t>(position));
    for (auto& entry : m_index) {
        if (entry.second > position)
            --entry.second;
    }
    notify(name, property->getValue().get(), nullptr);
    return true;
}

void PropertySet::clear()
{
    while (!m_properties.empty())
        remove(m_properties.back()->getName());
}

int32_t PropertySet::size() const
{
    return static_cast<int32_t>(m_properties.size());
}

std::vector<String> PropertySet::getNames() const
{
    std::vector<String> names;
    names.reserve(m_properties.size());
    for (const Reference<Property>& property : m_properties)
        names.push_back(property->getName());
    return names;
}

std::vector<Reference<Property>> PropertySet::getProperties() const
{
    return m_properties;
}

String PropertySet::getString(const String& name, const String& defaultValue) const
{
    Reference<Object> value = getProperty(name);
    return value ? value->toString() : defaultValue;
}

int64_t PropertySet::getInt64(const String& name, int64_t defaultValue) const
{
    Reference<Object> value = getProperty(name);
    if (!value)
        return defaultValue;
    if (const String* text = dynamic_cast<const String*>(value.get())) {
        int64_t parsed = 0;
        if (!detail::parseStrict(*text, parsed))
            refuse(name, u"an integer");
        return parsed;
    }
    const Number* number = dynamic_cast<const Number*>(value.get());
    if (!number)
        refuse(name, u"an integer");
    if (dynamic_cast<const Double*>(number) || dynamic_cast<const Float*>(number)) {
        const double real = number->toDouble();
        if (real != std::floor(real) || real < -9223372036854775808.0 || real >= 9223372036854775808.0)
            refuse(name, u"an integer");
        return static_cast<int64_t>(real);
    }
    if (dynamic_cast<const UInteger64*>(number) && number->toUInt64() > static_cast<uint64_t>(INT64_MAX))
        refuse(name, u"an integer in range");
    return number->toInt64();
}

int32_t PropertySet::getInt(const String& name, int32_t defaultValue) const
{
    const int64_t value = getInt64(name, defaultValue);
    if (value < INT32_MIN || value > INT32_MAX)
        refuse(name, u"a 32-bit integer");
    return static_cast<int32_t>(value);
}

double PropertySet::getDouble(const String& name, double defaultValue) const
{
    Reference<Object> value = getProperty(name);
    if (!value)
        return defaultValue;
    if (const String* text = dynamic_cast<const String*>(value.get())) {
        double parsed = 0;
        if (!detail::parseStrict(*text, parsed))
            refuse(name, u"a number");
        return parsed;
    }
    const Number* number = dynamic_cast<const Number*>(value.get());
    if (!number)
        refuse(name, u"a number");
    return number->toDouble();
}

bool PropertySet::getBool(const String& name, bool defaultValue) const
{
    Reference<Object> value = getProperty(name);
    if (!value)
        return defaultValue;
    if (const Boolean* boolean = dynamic_cast<const Boolean*>(value.get()))
        return boolean->booleanValue();
    if (const String* text = dynamic_cast<const String*>(value.get())) {
        if (text->equals(u"true", true))
            return true;
        if (text->equals(u"false", true))
            return false;
    }
    refuse(name, u"a truth value");
}

void PropertySet::addListener(IPropertyChangeListener* listener)
{
    if (!listener)
        throw ResultException(results::POINTER);
    m_listeners.push_back(listener);
}

void PropertySet::removeListener(IPropertyChangeListener* listener)
{
    for (auto it = m_listeners.begin(); it != m_listeners.end(); ++it) {
        if (*it == listener) {
            m_listeners.erase(it);
            return;
        }
    }
}

// All or nothing: the new state is built beside the old one and swapped in,
// and the listeners hear of the changes only then.
void PropertySet::putAll(const Values& values)
{
    std::vector<Reference<Property>> properties(m_properties);
    std::map<String, size_t> index(m_index);
    struct Change {
        String name;
        Reference<Object> oldValue;
        Reference<Object> newValue;
    };
    std::vector<Change> changes;
    changes.reserve(values.size());
    for (const auto& value : values) {
        Reference<Property> property(new Property(value.first, value.second));
        auto found = index.find(value.first);
        if (found != index.end()) {
            changes.push_back(Change{value.first, properties[found->second]->getValue(), value.second});
            properties[found->second] = property;
        } else {
            changes.push_back(Change{value.first, Reference<Object>(), value.second});
            index.emplace(value.first, properties.size());
            properties.push_back(property);
        }
    }
    m_properties.swap(properties);
    m_index.swap(index);
    for (const Change& change : changes)
        notify(change.name, change.oldValue.get(), change.newValue.get());
}

void PropertySet::loadText(const String& text, const String& source)
{
    Values values;
    for (auto& entry : PropertiesFormat::parse(text, source))
        values.emplace_back(entry.first, Reference<Object>(new String(entry.second)));
    putAll(values);
}

void PropertySet::load(const String& path)
{
    loadText(utf8Text(detail::readFile(path)), path);
}

String PropertySet::storeText(const String& comment) const
{
    String text;
    if (comment.getLength() > 0) {
        text.append(u"# ");
        text.append(comment);
        text.append(u'\n');
    }
    for (const Reference<Property>& property : m_properties) {
        text.append(PropertiesFormat::formatEntry(property->getName(), property->getValue()->toString()));
        text.append(u'\n');
    }
    return text;
}

void PropertySet::store(const String& path, const String& comment) const
{
    detail::replaceFile(path, utf8Bytes(storeText(comment)));
}

void PropertySet::loadXmlText(const String& text, const String& source)
{
    putAll(XmlReader(text, source).read());
}

void PropertySet::loadXml(const String& path)
{
    loadXmlText(utf8Text(detail::readFile(path)), path);
}

String PropertySet::storeXmlText() const
{
    String text(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<properties>\n");
    for (const Reference<Property>& property : m_properties) {
        Reference<Object> value = property->getValue();
        text.append(u"  <property name=\"");
        appendXmlEscaped(text, property->getName());
        text.append(u"\" type=\"");
        text.append(typeName(*value));
        text.append(u"\">");
        appendXmlEscaped(text, value->toString());
        text.append(u"</property>\n");
    }
    text.append(u"</properties>\n");
    return text;
}

void PropertySet::storeXml(const String& path) const
{
    detail::replaceFile(path, utf8Bytes(storeXmlText()));
}

} // namespace util
} // namespace qv
