// Each allocation of the converter operations fails in turn: the failure
// must surface as OutOfMemoryException and leave the registry and the
// converters as they were.
#include <qv/lang/String.h>
#include <qv/text/charset/BTCCodePage.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CTBCodePage.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/text/charset/CodecManager.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <string>

using namespace qv;
using namespace qv::text::charset;

using CharsetAllocationSweep = qvtest::AllocationFaultTest;

TEST_F(CharsetAllocationSweep, ConvertersByNameAndTheRegistry)
{
    CodecManager* registry = CodecManager::getInstance();
    const int32_t codecs = registry->getCodecCount();
    Reference<ByteToCharConverter> decoder;
    Reference<CharToByteConverter> encoder;
    EXPECT_GT(qvtest::sweepAllocations(
                  [&] {
                      Reference<ByteToCharConverter> d = ByteToCharConverter::getConverter(u"utf-8");
                      Reference<CharToByteConverter> e = CharToByteConverter::getConverter(u"windows-1251");
                      decoder = d;
                      encoder = e;
                  },
                  [&] {
                      EXPECT_FALSE(decoder);
                      EXPECT_FALSE(encoder);
                      EXPECT_EQ(registry->getCodecCount(), codecs);
                  }),
              0);
    ASSERT_TRUE(decoder && encoder);

    // An unknown name: the exception carrying the name is itself made in
    // memory that may run out.
    qvtest::sweepAllocations([] {
        try {
            ByteToCharConverter::getConverter(u"NO-SUCH-ENCODING");
            ADD_FAILURE() << "an unknown encoding was found";
        } catch (const UnknownEncodingException&) {
        }
    });

    // The registry's own lookups (registration belongs to start-up: the
    // table is full by now).
    qvtest::sweepAllocations([&] {
        Reference<Object> made = registry->getDecoder(u"iso-8859-1");
        Reference<CodecClasses> classes = registry->getCodecClasses(u"a-name-longer-than-the-short-key-buffer-UTF-8");
        EXPECT_TRUE(made);
        EXPECT_FALSE(classes);
        EXPECT_TRUE(Reference<Object>(registry->getEncoder(u"EUC-JP")));
    });
    EXPECT_EQ(registry->getCodecCount(), codecs);
}

TEST_F(CharsetAllocationSweep, CodePageConvertersAndNarrowStrings)
{
    const std::string sjis = "\x93\xfa\x96\x7b\x8c\xea text";
    std::u16string decoded;
    EXPECT_GT(qvtest::sweepAllocations(
                  [&] {
                      BTCCodePage decoder(932);
                      char16_t out[64];
                      int32_t in = 0, at = 0;
                      decoder.convert(reinterpret_cast<const signed char*>(sjis.data()), &in,
                                      static_cast<int32_t>(sjis.size()), out, &at, 64);
                      decoder.flush(out, &at, 64);
                      decoded.assign(out, static_cast<size_t>(at));
                  },
                  [&] { EXPECT_TRUE(decoded.empty()); }),
              0);
    EXPECT_EQ(decoded, u"\u65e5\u672c\u8a9e text");

    qvtest::sweepAllocations([&] {
        CTBCodePage encoder(20932);
        signed char out[64];
        int32_t in = 0, at = 0;
        encoder.convert(decoded.data(), &in, static_cast<int32_t>(decoded.size()), out, &at, 64);
        EXPECT_EQ(at, 11);
    });

    // String's own narrow paths through the registry.
    String text(u"caf\u00e9 \u20ac");
    const String before(text);
    qvtest::sweepAllocations(
        [&] {
            String back(text.getBytes(u"UTF-8"), -1, u"UTF-8");
            EXPECT_TRUE(back == before);
            String wide(sjis.c_str(), -1, u"CP932");
            EXPECT_EQ(wide.toU16String(), u"\u65e5\u672c\u8a9e text");
        },
        [&] { EXPECT_TRUE(text == before); });
}
