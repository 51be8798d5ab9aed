#ifndef QV_CORE_TEXTSPELLING_H
#define QV_CORE_TEXTSPELLING_H

#include <string>
#include <type_traits>

namespace qv {

// UTF-16 text is taken as char16_t and, for older callers, as unsigned
// short. The unsigned short form of each such function is a template that
// only unsigned short deduces: a null pointer literal (nullptr, NULL, 0)
// then picks the char16_t form instead of fitting both.
template <class T>
using IfUShortText = std::enable_if_t<std::is_same<T, unsigned short>::value, int>;

// Either spelling, for the few calls whose two forms would be the same code.
template <class T>
using IfUtf16Text = std::enable_if_t<std::is_same<T, char16_t>::value || std::is_same<T, unsigned short>::value, int>;

// Names that are plain ASCII (encoding names) are also taken as narrow text
// and as UTF-32 (wchar_t here).
template <class T>
using IfOtherNameText = std::enable_if_t<
    std::is_same<T, unsigned short>::value || std::is_same<T, char>::value || std::is_same<T, wchar_t>::value, int>;

// Such a name as UTF-16, unit by unit. A unit beyond the 16-bit range becomes
// U+FFFD rather than being cut down, so it cannot alias another name.
template <class T>
std::u16string widenName(const T* name)
{
    std::u16string wide;
    for (; *name; ++name) {
        const auto unit = static_cast<std::make_unsigned_t<T>>(*name);
        if constexpr (sizeof(T) > sizeof(char16_t))
            wide.push_back(unit > 0xFFFFu ? u'\uFFFD' : static_cast<char16_t>(unit));
        else
            wide.push_back(static_cast<char16_t>(unit));
    }
    return wide;
}

// A name in another spelling held as UTF-16 for one call. A null name stays
// null, so the UTF-16 form called with it decides what null means.
class Utf16Name {
public:
    template <class T>
    explicit Utf16Name(const T* name) : m_null(!name), m_text(name ? widenName(name) : std::u16string())
    {}
    const char16_t* get() const noexcept { return m_null ? nullptr : m_text.c_str(); }

private:
    bool m_null;
    std::u16string m_text;
};

} // namespace qv

#endif
