// QVComGUIDFromString on arbitrary UTF-16 text (the input's bytes taken two
// at a time, little-endian, as one NUL-terminated text). Whatever parses
// must format back to the same text in upper case; whatever does not must
// be refused with 0x80070057.

#include "FuzzSupport.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::u16string text;
    for (size_t i = 0; i + 1 < size; i += 2)
        text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    GUID guid;
    const QVRESULT result = QVComGUIDFromString(text.c_str(), &guid);
    if (result != QV_S_OK) {
        fuzz::check(result == QV_E_INVALIDARG, "a refused text gives 0x80070057");
        qv::util::Guid out;
        fuzz::check(!qv::util::Guid::tryParse(text.c_str(), out), "tryParse agrees with the platform");
        return 0;
    }
    char16_t formatted[39];
    fuzz::check(QVComStringFromGUID(&guid, formatted, 39) == QV_S_OK, "formatting succeeds");
    const size_t length = text.find(u'\0') == std::u16string::npos ? text.size() : text.find(u'\0');
    fuzz::check(length == 38, "only 38 units parse");
    for (size_t i = 0; i < 38; ++i) {
        char16_t c = text[i];
        if (c >= u'a' && c <= u'f')
            c = static_cast<char16_t>(c - u'a' + u'A');
        fuzz::check(c == formatted[i], "the text round-trips in upper case");
    }
    return 0;
}
