// Properties text and the property set's XML: every entry read formats and
// reads back the same, and a stored set loads back equal.

#include <qv/qvcl3.h>

#include <cstdlib>

using qv::String;
using qv::util::PropertiesFormat;
using qv::util::PropertiesFormatException;
using qv::util::PropertySet;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    String text;
    for (size_t i = 0; i + 1 < size; i += 2)
        text.append(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    try {
        for (const auto& entry : PropertiesFormat::parse(text, String(u"fuzz"))) {
            const auto again =
                PropertiesFormat::parse(PropertiesFormat::formatEntry(entry.first, entry.second), String(u"again"));
            if (again.size() != 1 || again[0].first != entry.first || again[0].second != entry.second)
                std::abort();
        }
    } catch (const PropertiesFormatException& e) {
        if (e.getLine() < 1)
            std::abort();
    }
    PropertySet set;
    try {
        set.loadXmlText(text, String(u"fuzz"));
    } catch (const PropertiesFormatException&) {
        return 0;
    }
    PropertySet back;
    back.loadXmlText(set.storeXmlText(), String(u"stored"));
    if (back.getNames() != set.getNames())
        std::abort();
    for (const String& name : set.getNames()) {
        if (back.getString(name) != set.getString(name))
            std::abort();
    }
    return 0;
}
