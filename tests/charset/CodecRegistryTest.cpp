#include <qv/core/ClassManagerBase.h>
#include <qv/text/charset/BTCASCII.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/text/charset/CodecManager.h>
#include <qv/text/charset/EncInfo.h>

#include <LocaleScope.h>
#include <QvTextPrinting.h>
#include <Thrown.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace qv;
using namespace qv::text::charset;

namespace {

std::u16string decoderName(const char16_t* name)
{
    return ByteToCharConverter::getConverter(name)->getEncodingName();
}

std::u16string encoderName(const char16_t* name)
{
    return CharToByteConverter::getConverter(name)->getEncodingName();
}

constexpr Result kFail = static_cast<Result>(0x80004005u);
constexpr Result kInvalidArg = static_cast<Result>(0x80070057u);
constexpr Result kTooSmall = static_cast<Result>(0x80004009u);

} // namespace

TEST(CodecRegistry, NamesAndAliasesAreFoundWhateverTheirCase)
{
    const std::pair<const char16_t*, const char16_t*> names[] = {
        {u"latin1", u"ISO8859_1"},    {u"Latin1", u"ISO8859_1"},    {u"DEFAULT", u"ASCII"}, {u"ASCII7", u"ASCII"},
        {u"ibm-437", u"CP437"},       {u"utf_8", u"UTF-8"},         {u"a7", u"AMP-7"},      {u"cp1250", u"CP1250"},
        {u"WINDOWS-1250", u"CP1250"}, {u"windows-1258", u"CP1258"}, {u"MS932", u"CP932"},   {u"Windows-31J", u"CP932"},
        {u"EUC-JP", u"EUCJP"},        {u"euc_jp", u"EUCJP"}};
    for (const auto& name : names) {
        EXPECT_EQ(decoderName(name.first), name.second) << String(name.first).toUtf8();
        EXPECT_EQ(encoderName(name.first), name.second) << String(name.first).toUtf8();
    }
    // Encoding names are ASCII, so narrow and UTF-32 spellings find the same rows.
    EXPECT_EQ(std::u16string(ByteToCharConverter::getConverter("latin1")->getEncodingName()), u"ISO8859_1");
    EXPECT_EQ(std::u16string(CharToByteConverter::getConverter(L"ascii7")->getEncodingName()), u"ASCII");
    const unsigned short utf8[] = {'u', 't', 'f', '-', '8', 0};
    EXPECT_EQ(std::u16string(ByteToCharConverter::getConverter(utf8)->getEncodingName()), u"UTF-8");
    EXPECT_EQ(std::u16string(CharToByteConverter::getConverter(static_cast<const char*>(nullptr))->getEncodingName()),
              CharToByteConverter::getDefaultConverter()->getEncodingName());
    // 45 rows, "ASCII" twice.
    EXPECT_EQ(CodecManager::getInstance()->getCodecCount(), 44);
}

TEST(CodecRegistry, UnknownNamesThrowWithTheName)
{
    for (const char16_t* name : {u"UTF-16", u"UTF-32", u"", u"latin9"}) {
        EXPECT_EQ(
            qvtest::messageOf<UnknownEncodingException>([&] { ByteToCharConverter::getConverter(name); }, 0x8BB34103u),
            String(name).toUtf8());
        EXPECT_THROW(CharToByteConverter::getConverter(name), UnknownEncodingException);
        EXPECT_EQ(qvtest::messageOf<UnknownEncodingException>(
                      [&] { CharToByteConverter::getConverter(String(name).toUtf8().c_str()); }),
                  String(name).toUtf8());
        EXPECT_FALSE(CodecManager::getInstance()->getEncoder(name));
        EXPECT_FALSE(CodecManager::getInstance()->getDecoder(name));
    }
    EXPECT_FALSE(CodecManager::getInstance()->getDecoder(nullptr));
    // A unit beyond 16 bits must not be cut down to "ASCII".
    EXPECT_THROW(ByteToCharConverter::getConverter(L"\U00010041SCII"), UnknownEncodingException);
}

// The registry hands out a fresh object nobody holds yet: the caller owns it,
// whether it deletes it or takes the first reference itself.
TEST(CodecRegistry, LookupsGiveTheCallerAnUnheldObject)
{
    CodecManager* codecs = CodecManager::getInstance();
    Object* decoder = codecs->getDecoder(u"utf-8");
    ASSERT_NE(dynamic_cast<ByteToCharConverter*>(decoder), nullptr);
    EXPECT_EQ(std::u16string(dynamic_cast<ByteToCharConverter*>(decoder)->getEncodingName()), u"UTF-8");
    delete decoder;

    for (const char16_t* name : {u"latin1", u"cp1251"}) {
        Object* encoder = codecs->getEncoder(name);
        ASSERT_NE(dynamic_cast<CharToByteConverter*>(encoder), nullptr);
        EXPECT_EQ(encoder->AddRef(), 1u);
        EXPECT_EQ(encoder->Release(), 0u);
    }
}

TEST(CodecRegistry, CodePagesAreConvertersWithoutRegisteredClasses)
{
    EXPECT_FALSE(CodecManager::getInstance()->getCodecClasses(u"CP1250"));

    Reference<ByteToCharConverter> decoder = ByteToCharConverter::getConverter(u"windows-1251");
    const signed char in[] = {static_cast<signed char>(0xCF), static_cast<signed char>(0xF0)};
    char16_t out[4] = {};
    int32_t inPos = 0;
    int32_t outPos = 0;
    decoder->convert(in, &inPos, 2, out, &outPos, 4);
    EXPECT_EQ(std::u16string(out, outPos), u"Пр");
}

TEST(CodecRegistry, FirstRegistrationWins)
{
    CodecManager* codecs = CodecManager::getInstance();
    codecs->registerCodec(u"latin1", u"qv::text::charset::CTBASCII", u"qv::text::charset::BTCASCII");
    EXPECT_EQ(decoderName(u"LATIN1"), u"ISO8859_1");

    codecs->registerCodec(u"Test-Latin", u"qv::text::charset::CTBISO8859_1", u"qv::text::charset::BTCISO8859_1");
    codecs->registerCodec(u"TEST-LATIN", u"qv::text::charset::CTBASCII", u"qv::text::charset::BTCASCII");
    EXPECT_EQ(encoderName(u"test-latin"), u"ISO8859_1");

    EXPECT_THROW(codecs->registerCodec(u"Test-Missing", u"qv::NoSuchEncoder", u"qv::NoSuchDecoder"),
                 ClassNotFoundException);
    EXPECT_FALSE(codecs->getDecoder(u"Test-Missing"));
    EXPECT_THROW(codecs->registerCodec(nullptr, u"a", u"b"), ResultException);

    // The registry takes names in the unsigned short spelling as well.
    const unsigned short name[] = {'t', 'e', 's', 't', '-', 'u', 's', 0};
    const std::u16string encoder = u"qv::text::charset::CTBUTF8", decoder = u"qv::text::charset::BTCUTF8";
    const std::vector<unsigned short> encoderUnits(encoder.begin(), encoder.end() + 1),
        decoderUnits(decoder.begin(), decoder.end() + 1);
    codecs->registerCodec(name, encoderUnits.data(), decoderUnits.data());
    EXPECT_EQ(decoderName(u"TEST-US"), u"UTF-8");
    std::unique_ptr<Object> byShortName(codecs->getEncoder(name));
    ASSERT_TRUE(dynamic_cast<CharToByteConverter*>(byShortName.get()));
    EXPECT_EQ(std::u16string(static_cast<CharToByteConverter&>(*byShortName).getEncodingName()), u"UTF-8");
    EXPECT_TRUE(std::unique_ptr<Object>(codecs->getDecoder(name)));
    EXPECT_TRUE(codecs->getCodecClasses(name));
    EXPECT_THROW(
        codecs->registerCodec(static_cast<const unsigned short*>(nullptr), encoderUnits.data(), decoderUnits.data()),
        ResultException);
    EXPECT_FALSE(codecs->getDecoder(static_cast<const unsigned short*>(nullptr)));
}

namespace {

// Breaks the contract: keeps its input and writes nothing, however much
// room it is given.
class StalledDecoder : public BTCASCII {
public:
    using ByteToCharConverter::convert;
    int32_t convert(const signed char*, int32_t*, int32_t, char16_t*, int32_t*, int32_t) override { return 0; }
};

class WrongDirection : public BTCASCII {};

} // namespace

TEST(CodecRegistry, MisbehavingRegistrationsFailInsteadOfHanging)
{
    ClassManager::getInstance()->registerClass(u"test::StalledDecoder", &typeid(StalledDecoder),
                                               [] { return static_cast<Object*>(new StalledDecoder()); });
    ClassManager::getInstance()->registerClass(u"test::WrongDirection", &typeid(WrongDirection),
                                               [] { return static_cast<Object*>(new WrongDirection()); });
    CodecManager* codecs = CodecManager::getInstance();
    codecs->registerCodec(u"test-stalled", u"qv::text::charset::CTBASCII", u"test::StalledDecoder");
    codecs->registerCodec(u"test-wrong", u"test::WrongDirection", u"test::WrongDirection");

    EXPECT_THROW(String("abc", -1, u"test-stalled"), IllegalStateException);
    EXPECT_THROW(CharToByteConverter::getConverter(u"test-wrong"), CastFailedException);
}

TEST(CodecRegistry, DefaultConverterFollowsTheLocaleCodeSet)
{
    {
        LocaleScope locale("C.UTF-8");
        if (!locale.ok())
            GTEST_SKIP() << "no C.UTF-8 locale";
        EXPECT_EQ(std::u16string(ByteToCharConverter::getDefaultConverter()->getEncodingName()), u"UTF-8");
        EXPECT_EQ(encoderName(nullptr), u"UTF-8");
    }
    {
        LocaleScope locale("C");
        ASSERT_TRUE(locale.ok());
        EXPECT_EQ(decoderName(nullptr), u"ASCII");
        EXPECT_EQ(std::u16string(CharToByteConverter::getDefaultConverter()->getEncodingName()), u"ASCII");
    }
}

TEST(EncodingInfo, LooksUpByCodePageAndName)
{
    qv::text::charset::EncInfo info{};
    ASSERT_EQ(QVGetEncInfoByCodePage(65001, &info), 0);
    EXPECT_EQ(std::u16string(info.name), u"UTF-8");
    EXPECT_EQ(info.codePage, 65001u);
    EXPECT_EQ(info.reserved, 0u);
    EXPECT_EQ(QVGetEncInfoByCodePage(1200, &info), kFail);
    EXPECT_EQ(QVGetEncInfoByCodePage(-437, &info), kFail);
    ASSERT_EQ(QVGetEncInfoByCodePage(20932, &info), 0);
    EXPECT_EQ(std::u16string(info.name), u"EUCJP");

    const std::pair<const char16_t*, uint32_t> names[] = {
        {u"utf-8", 65001}, {u"cp437", 437},    {u"WINDOWS-1250", 1250}, {u"windows-1258", 1258},
        {u"MS932", 932},   {u"EUC-JP", 20932}, {u"euc_jp", 20932},      {u"ascii", 20127}};
    for (const auto& name : names) {
        ASSERT_EQ(QVGetEncInfoByName(name.first, &info), 0) << String(name.first).toUtf8();
        EXPECT_EQ(info.codePage, name.second);
    }
    EXPECT_EQ(std::u16string(info.name), u"ASCII");
    // Further names of the codec table are registry names, not records.
    EXPECT_EQ(QVGetEncInfoByName(u"LATIN1", &info), kFail);
    EXPECT_EQ(QVGetEncInfoByName(u"WINDOWS-1252", &info), kFail);
    EXPECT_EQ(QVGetEncInfoByName(u"UTF-16LE", &info), kFail);

    EXPECT_EQ(QVGetEncInfoByName(nullptr, &info), kInvalidArg);
    EXPECT_EQ(QVGetEncInfoByName(u"UTF-8", nullptr), kInvalidArg);
    EXPECT_EQ(QVGetEncInfoByCodePage(65001, nullptr), kInvalidArg);
}

TEST(EncodingInfo, EnumeratesAllRecordsInTableOrder)
{
    uint32_t count = 0;
    EXPECT_EQ(QVEnumerateEncInfo(&count, nullptr), kTooSmall);
    EXPECT_EQ(count, 24u);
    EXPECT_EQ(QVEnumerateEncInfo(nullptr, nullptr), kInvalidArg);
    count = 3;
    EXPECT_EQ(QVEnumerateEncInfo(&count, nullptr), kInvalidArg);

    std::vector<EncInfo> records(30, EncInfo{nullptr, 7, 7});
    count = 23;
    EXPECT_EQ(QVEnumerateEncInfo(&count, records.data()), kTooSmall);
    EXPECT_EQ(count, 24u);
    EXPECT_EQ(records[0].name, nullptr);

    count = 30;
    ASSERT_EQ(QVEnumerateEncInfo(&count, records.data()), 0);
    ASSERT_EQ(count, 24u);
    const std::pair<const char16_t*, uint32_t> expected[] = {
        {u"ASCII", 20127}, {u"ISO8859_1", 28591}, {u"CP437", 437},   {u"CP1252", 1252}, {u"UTF-8", 65001},
        {u"CP1250", 1250}, {u"CP1251", 1251},     {u"CP1253", 1253}, {u"CP1254", 1254}, {u"CP1255", 1255},
        {u"CP1256", 1256}, {u"CP1257", 1257},     {u"CP1258", 1258}, {u"CP737", 737},   {u"CP775", 775},
        {u"CP850", 850},   {u"CP852", 852},       {u"CP855", 855},   {u"CP857", 857},   {u"CP858", 858},
        {u"CP862", 862},   {u"CP866", 866},       {u"CP932", 932},   {u"EUCJP", 20932}};
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(std::u16string(records[i].name), expected[i].first) << i;
        EXPECT_EQ(records[i].codePage, expected[i].second) << i;
        EXPECT_EQ(records[i].reserved, 0u) << i;
    }
    EXPECT_EQ(records[24].codePage, 7u);
}
