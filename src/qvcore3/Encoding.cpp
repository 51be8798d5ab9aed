#include "FaultInjection.h"
#include "Utf.h"
#include "UtfArithmetic.h"

#include <langinfo.h>

#include <cstddef>
#include <cstring>

namespace {

// The narrow encodings QVUnicodeToAnsi writes itself. Any code set other than
// UTF-8 and ISO-8859-1 is written as ASCII: the characters every such code
// set shares, '?' for the rest.
enum class Narrow { Ascii, Latin1, Utf8 };

const char* CodeSet() noexcept
{
    const char* codeSet = nl_langinfo(CODESET);
    return codeSet ? codeSet : "ANSI_X3.4-1968";
}

Narrow CurrentNarrow() noexcept
{
    const char* codeSet = CodeSet();
    if (std::strcmp(codeSet, "UTF-8") == 0) {
        return Narrow::Utf8;
    }
    if (std::strcmp(codeSet, "ISO-8859-1") == 0) {
        return Narrow::Latin1;
    }
    return Narrow::Ascii;
}

// Bytes one code point takes; 0 for what the encoding cannot represent.
size_t EncodedSize(Narrow narrow, char32_t cp) noexcept
{
    if (cp == qvcore3::kUnpairedSurrogate) {
        return 0;
    }
    switch (narrow) {
    case Narrow::Utf8: return static_cast<size_t>(qvutf::utf8Length(cp));
    case Narrow::Latin1: return cp <= 0xFF ? 1 : 0;
    case Narrow::Ascii: break;
    }
    return cp < 0x80 ? 1 : 0;
}

char* Encode(Narrow narrow, char32_t cp, char* out) noexcept
{
    const size_t size = EncodedSize(narrow, cp);
    if (size == 0) {
        *out++ = '?';
    } else if (size == 1) {
        *out++ = static_cast<char>(cp);
    } else {
        out += qvutf::encodeUtf8(cp, out);
    }
    return out;
}

} // namespace

// Nothing is written when the text does not fit; *written (optional) then
// holds the bytes needed without the NUL, so capacity 0 with a null
// destination asks for the size.
extern "C" QVRESULT QVUnicodeToAnsi(const char16_t* text, int32_t length, char* destination, int32_t capacity,
                                    int32_t* written) noexcept
{
    if ((!text && length > 0) || (!destination && capacity > 0)) {
        return QV_E_POINTER;
    }
    if (length < -1 || capacity < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVUnicodeToAnsi);
    const size_t count = length >= 0 ? static_cast<size_t>(length) : static_cast<size_t>(QVStrLenW(text));
    const Narrow narrow = CurrentNarrow();
    size_t needed = 0;
    for (size_t position = 0; position < count;) {
        const size_t size = EncodedSize(narrow, qvcore3::NextCodePoint(text, count, &position));
        needed += size != 0 ? size : 1;
    }
    if (needed > 0x7FFFFFFE) {
        return QV_E_INVALIDARG;
    }
    if (written) {
        *written = static_cast<int32_t>(needed);
    }
    if (needed + 1 > static_cast<size_t>(capacity)) {
        return QV_E_BUFFER_TOO_SMALL;
    }
    char* out = destination;
    for (size_t position = 0; position < count;) {
        out = Encode(narrow, qvcore3::NextCodePoint(text, count, &position), out);
    }
    *out = '\0';
    return QV_S_OK;
}

// nl_langinfo's names mapped onto the codec table's: ISO-8859-n becomes
// ISO8859_n, the others are kept upper-cased.
extern "C" QVRESULT QVGetDefaultCharEncoding(char16_t* name, int32_t capacity) noexcept
{
    if (!name) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVGetDefaultCharEncoding);
    const char* codeSet = CodeSet();
    char mapped[64];
    if (std::strcmp(codeSet, "ANSI_X3.4-1968") == 0) {
        std::strcpy(mapped, "ASCII");
    } else if (std::strncmp(codeSet, "ISO-8859-", 9) == 0 && std::strlen(codeSet) < 20) {
        std::strcpy(mapped, "ISO8859_");
        std::strcat(mapped, codeSet + 9);
    } else {
        size_t i = 0;
        for (; codeSet[i] != 0 && i + 1 < sizeof mapped; ++i) {
            const char c = codeSet[i];
            mapped[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        mapped[i] = '\0';
    }
    const size_t length = std::strlen(mapped);
    if (capacity < 0 || length + 1 > static_cast<size_t>(capacity)) {
        return QV_E_BUFFER_TOO_SMALL;
    }
    for (size_t i = 0; i <= length; ++i) {
        name[i] = static_cast<unsigned char>(mapped[i]);
    }
    return QV_S_OK;
}
