#include "Utf.h"

#include "UtfArithmetic.h"

#include <cstring>

namespace qvcore3 {

char32_t NextCodePoint(const char16_t* text, size_t end, size_t* position) noexcept
{
    const char16_t unit = text[(*position)++];
    if (!qvutf::isSurrogate(unit)) {
        return unit;
    }
    if (qvutf::isHighSurrogate(unit) && *position < end) {
        const char16_t low = text[*position];
        if (qvutf::isLowSurrogate(low)) {
            ++*position;
            return qvutf::combineSurrogates(unit, low);
        }
    }
    return kUnpairedSurrogate;
}

namespace {

char32_t NextOrReplacement(const char16_t* text, size_t end, size_t* position) noexcept
{
    const char32_t cp = NextCodePoint(text, end, position);
    return cp == kUnpairedSurrogate ? 0xFFFD : cp;
}

} // namespace

size_t Utf8Length(const char16_t* text, size_t count) noexcept
{
    size_t bytes = 0;
    size_t position = 0;
    while (position < count) {
        const char32_t cp = NextOrReplacement(text, count, &position);
        bytes += static_cast<size_t>(qvutf::utf8Length(cp));
    }
    return bytes;
}

char* WriteUtf8(const char16_t* text, size_t count, char* out) noexcept
{
    size_t position = 0;
    while (position < count) {
        out += qvutf::encodeUtf8(NextOrReplacement(text, count, &position), out);
    }
    return out;
}

Utf8String::~Utf8String()
{
    QVMemFree(m_text);
}

QVRESULT Utf8String::assign(const char16_t* text) noexcept
{
    QVMemFree(m_text);
    m_text = nullptr;
    if (!text) {
        return QV_S_OK;
    }
    const size_t units = static_cast<size_t>(QVStrLenW(text));
    char* buffer = static_cast<char*>(QVMemAlloc(Utf8Length(text, units) + 1));
    if (!buffer) {
        return QV_E_OUTOFMEMORY;
    }
    *WriteUtf8(text, units, buffer) = '\0';
    m_text = buffer;
    return QV_S_OK;
}

Utf8Array::~Utf8Array()
{
    QVMemFree(m_block);
}

QVRESULT Utf8Array::assign(const char* first, const char16_t* const* strings, size_t count) noexcept
{
    QVMemFree(m_block);
    m_block = nullptr;
    const size_t total = count + (first ? 1 : 0);
    size_t bytes = first ? std::strlen(first) + 1 : 0;
    for (size_t i = 0; i < count; ++i) {
        bytes += Utf8Length(strings[i], static_cast<size_t>(QVStrLenW(strings[i]))) + 1;
    }
    void* block = QVMemAlloc((total + 1) * sizeof(char*) + bytes);
    if (!block) {
        return QV_E_OUTOFMEMORY;
    }
    char** pointers = static_cast<char**>(block);
    char* out = reinterpret_cast<char*>(pointers + total + 1);
    size_t slot = 0;
    if (first) {
        const size_t length = std::strlen(first) + 1;
        std::memcpy(out, first, length);
        pointers[slot++] = out;
        out += length;
    }
    for (size_t i = 0; i < count; ++i) {
        pointers[slot++] = out;
        out = WriteUtf8(strings[i], static_cast<size_t>(QVStrLenW(strings[i])), out);
        *out++ = '\0';
    }
    pointers[slot] = nullptr;
    m_block = block;
    return QV_S_OK;
}

} // namespace qvcore3
