// String from narrow bytes and back, in every encoding the registry knows:
// what decodes re-encodes without error, the three getBytes forms agree, and
// bad bytes or unmappable text are rejected with the converters' exceptions.
#include <qv/qvcl3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char16_t* const ENCODINGS[] = {nullptr,     u"ASCII7",   u"ISO-8859-1", u"CP437",    u"CP1252", u"UTF-8",
                                     u"UTF-16LE", u"UTF-16BE", u"UTF-32LE",   u"UTF-32BE", u"AMP-7",  u"CP1250",
                                     u"CP1251",   u"CP1253",   u"CP1255",     u"CP1256",   u"CP866",  u"CP932",
                                     u"EUC-JP",   u"UTF-16",   u"UTF-32",     u"NO-SUCH",  u"utf-8",  u"latin1"};

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool rejected(const qv::Exception& e)
{
    return dynamic_cast<const qv::text::charset::InvalidCharacterException*>(&e) ||
           dynamic_cast<const qv::text::charset::UnmappableCharacterException*>(&e) ||
           dynamic_cast<const qv::text::charset::UnknownEncodingException*>(&e) ||
           dynamic_cast<const qv::ResultException*>(&e);
}

void encodeAll(const qv::String& text, const char16_t* encoding)
{
    const char* bytes = nullptr;
    try {
        bytes = text.getBytes(encoding);
    } catch (const qv::Exception& e) {
        if (!rejected(e))
            fail("getBytes threw an unexpected exception");
        return;
    }
    if (!bytes)
        fail("getBytes gave null");
    // Room for the widest encoding (four bytes a unit, and AMP-7's shifts);
    // the bytes may hold NULs, so the count comes from the call.
    std::string copy(static_cast<size_t>(text.getLength()) * 8 + 16, '\x55');
    const int32_t written = text.getBytes(&copy[0], static_cast<int32_t>(copy.size()), encoding);
    if (written < 0 || static_cast<size_t>(written) >= copy.size() || copy[static_cast<size_t>(written)] != 0)
        fail("getBytes into memory gave a bad count");
    if (std::memcmp(copy.data(), text.getBytes(encoding), static_cast<size_t>(written)) != 0)
        fail("the getBytes forms disagree");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const char16_t* encoding = ENCODINGS[data[0] % (sizeof(ENCODINGS) / sizeof(ENCODINGS[0]))];
    const char* bytes = reinterpret_cast<const char*>(data + 1);
    const int32_t length = static_cast<int32_t>(size - 1);
    try {
        qv::String decoded(bytes, length, encoding);
        encodeAll(decoded, encoding);
    } catch (const qv::Exception& e) {
        if (!rejected(e))
            fail("narrow construction threw an unexpected exception");
    }
    // The same bytes read as UTF-16 text and encoded.
    std::u16string units((size - 1) / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(data[1 + 2 * i] | (data[2 + 2 * i] << 8));
    encodeAll(qv::String(units.data(), static_cast<int32_t>(units.size())), encoding);
    return 0;
}
