#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/text/charset/BTCCom.h>
#include <qv/text/charset/CTBCom.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/text/charset/CodecManager.h>
#include <qv/util/Guid.h>
#include <qv/util/RegistryKey.h>

#include "TempRegistry.h"
#include "Thrown.h"

#include <iconv.h>

#include <fstream>

using qv::text::charset::ByteToCharConverter;
using qv::text::charset::CharToByteConverter;
using qv::util::RegistryKey;

namespace {

constexpr GUID kCp037Class = {0x314A70D4, 0xDE93, 0x4784, {0x80, 0xD7, 0x6D, 0xCB, 0xEC, 0xC2, 0xBC, 0x70}};

// All 256 bytes decoded by glibc's own IBM037 table.
std::u16string iconvDecodeAllBytes()
{
    iconv_t cd = iconv_open("UTF-16LE", "IBM037");
    EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1));
    char in[256];
    for (int i = 0; i < 256; ++i)
        in[i] = static_cast<char>(i);
    char out[512];
    char* inPtr = in;
    char* outPtr = out;
    size_t inLeft = sizeof in;
    size_t outLeft = sizeof out;
    EXPECT_NE(iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft), static_cast<size_t>(-1));
    iconv_close(cd);
    std::u16string text;
    for (int i = 0; i < 256; ++i)
        text.push_back(static_cast<char16_t>(static_cast<unsigned char>(out[2 * i]) |
                                             (static_cast<unsigned char>(out[2 * i + 1]) << 8)));
    return text;
}

class Component : public qvtest::TempRegistry {
protected:
    void registerSample() { ASSERT_EQ(qvtest::run({QVTEST_REGSVR, "-s", QVTEST_CP037_MODULE}).status, 0); }
    void unregisterSample() { ASSERT_EQ(qvtest::run({QVTEST_REGSVR, "-s", "-u", QVTEST_CP037_MODULE}).status, 0); }

    void TearDown() override
    {
        QVComFreeUnusedLibraries(nullptr);
        TempRegistry::TearDown();
    }
};

} // namespace

TEST_F(Component, ARegisteredModuleDecodesCP037ExactlyAsIconvAndUnregisteringForgetsIt)
{
    EXPECT_THROW(ByteToCharConverter::getConverter(u"CP037"), qv::text::charset::UnknownEncodingException);
    registerSample();

    qv::Reference<ByteToCharConverter> decoder = ByteToCharConverter::getConverter(u"cp037");
    ASSERT_TRUE(decoder);
    EXPECT_NE(decoder.cast<qv::text::charset::BTCCom>(), nullptr);
    EXPECT_EQ(std::u16string(decoder->getEncodingName()), u"CP037");
    signed char bytes[256];
    for (int i = 0; i < 256; ++i)
        bytes[i] = static_cast<signed char>(i);
    char16_t units[256];
    // In uneven pieces, as a stream would hand them over.
    int32_t inPos = 0;
    int32_t outPos = 0;
    while (inPos < 256) {
        const int32_t end = std::min(256, inPos + 37);
        decoder->convert(bytes, &inPos, end, units, &outPos, std::min(256, outPos + 29));
    }
    EXPECT_EQ(outPos, 256);
    EXPECT_EQ(std::u16string(units, 256), iconvDecodeAllBytes());

    qv::Reference<CharToByteConverter> encoder = CharToByteConverter::getConverter(u"CP037");
    signed char back[256];
    inPos = 0;
    outPos = 0;
    EXPECT_EQ(encoder->convert(units, &inPos, 256, back, &outPos, 256), 256);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(back), 256), std::string(reinterpret_cast<char*>(bytes), 256));

    decoder.reset();
    encoder.reset();
    uint32_t freed = 0;
    EXPECT_EQ(QVComFreeUnusedLibraries(&freed), 0);
    EXPECT_EQ(freed, 1u);

    unregisterSample();
    EXPECT_THROW(ByteToCharConverter::getConverter(u"CP037"), qv::text::charset::UnknownEncodingException);
    EXPECT_THROW(CharToByteConverter::getConverter(u"CP037"), qv::text::charset::UnknownEncodingException);
    EXPECT_THROW(ByteToCharConverter::getConverter(u"NOSUCH"), qv::text::charset::UnknownEncodingException);
}

TEST_F(Component, TheEncoderAdapterPassesSubstitutionOnAndMapsFailures)
{
    registerSample();
    qv::Reference<CharToByteConverter> encoder = CharToByteConverter::getConverter(u"CP037");
    const char16_t text[] = {u'A', 0x20AC, u'b'};
    signed char out[8];
    int32_t inPos = 0;
    int32_t outPos = 0;
    EXPECT_EQ(encoder->convert(text, &inPos, 3, out, &outPos, 8), 3);
    EXPECT_EQ(std::string(out, out + 3), "\xC1\x3F\x82") << "0x3F is the default substitution byte";

    const signed char none[2] = {0x40, 0x40};
    encoder->setSubstitutionBytes(none, 2); // any count but one drops
    inPos = outPos = 0;
    EXPECT_EQ(encoder->convert(text, &inPos, 3, out, &outPos, 8), 2);

    encoder->setSubstitutionMode(false);
    inPos = outPos = 0;
    EXPECT_THROW(encoder->convert(text, &inPos, 3, out, &outPos, 8), qv::text::charset::UnmappableCharacterException);
    EXPECT_EQ(inPos, 0);
    EXPECT_EQ(outPos, 0);
    inPos = 5; // past the end of the input: the component refuses it
    EXPECT_EQ(qvtest::resultOf<qv::ResultException>([&] { encoder->convert(text, &inPos, 3, out, &outPos, 8); }),
              qv::results::INVALIDARG);
}

TEST_F(Component, CreationByProgIdFollowsCurVerAndReportsEveryMissingPiece)
{
    GUID clsid{};
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(QVComClassIDFromProgID(u"Velmara.CharCodec.CP037", &clsid), QV_E_CLASSNOTREG);
    EXPECT_EQ(QVComCreateObjectByProgID(u"Velmara.CharCodec.CP037", nullptr, &IQVUnknown::iid, &object),
              QV_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(QVModuleComCreateObject(QV_INVALID_HANDLE, &kCp037Class, nullptr, &IQVUnknown::iid, &object),
              QV_E_CLASSNOTREG);

    registerSample();
    ASSERT_EQ(QVComClassIDFromProgID(u"Velmara.CharCodec.CP037", &clsid), 0);
    EXPECT_TRUE(clsid == kCp037Class);
    // CurVer is followed: point it at another version and the answer moves.
    const RegistryKey root = RegistryKey::classesRoot();
    const GUID other = {0xABCDEF01, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    root.createKey(u"Velmara.CharCodec.CP037.2\\CLSID").setValue(nullptr, qv::util::Guid(other).toString());
    root.createKey(u"Velmara.CharCodec.CP037\\CurVer").setValue(nullptr, qv::String(u"Velmara.CharCodec.CP037.2"));
    ASSERT_EQ(QVComClassIDFromProgID(u"Velmara.CharCodec.CP037", &clsid), 0);
    EXPECT_TRUE(clsid == other);

    // The module does not serve that class.
    const std::u16string otherKey = u"CLSID\\" + std::u16string(qv::util::Guid(other).toString().getData());
    const qv::String modulePath =
        root.openKey(
                (u"CLSID\\" + std::u16string(qv::util::Guid(kCp037Class).toString().getData()) + u"\\InprocServer32")
                    .c_str())
            .getValue(nullptr);
    // The module registered the absolute path of its own file.
    const std::string registered = modulePath.toUtf8();
    EXPECT_EQ(registered.front(), '/');
    EXPECT_NE(registered.find("libqvcp037.so"), std::string::npos);
    root.createKey((otherKey + u"\\InprocServer32").c_str()).setValue(nullptr, modulePath);
    EXPECT_EQ(QVComCreateObjectByProgID(u"Velmara.CharCodec.CP037", nullptr, &IQVUnknown::iid, &object),
              QV_E_CLASSNOTAVAILABLE);

    const auto createWith = [&](const qv::String& path) {
        root.createKey((otherKey + u"\\InprocServer32").c_str()).setValue(nullptr, path);
        return QVModuleComCreateObject(QV_INVALID_HANDLE, &other, nullptr, &IQVUnknown::iid, &object);
    };
    EXPECT_EQ(createWith(qv::String(u"/nonexistent/libnothing.so")), QV_E_FILE_NOT_FOUND);
    const std::string notElf = m_dir + "/notelf.so";
    std::ofstream(notElf) << "not a shared object\n";
    EXPECT_EQ(createWith(qv::String(notElf.c_str(), -1, u"UTF-8")), static_cast<QVRESULT>(0x800700C1));
    EXPECT_EQ(createWith(qv::String(QVTEST_QVCORE3, -1, u"UTF-8")), QV_E_PROC_NOT_FOUND);
    EXPECT_EQ(createWith(qv::String()), QV_E_CLASSNOTREG);

    // A damaged class identifier is reported, not used.
    const std::string clsidFile = m_dir + "/ClassesRoot/Velmara.CharCodec.CP037.2/CLSID/@";
    std::ofstream(clsidFile, std::ios::trunc) << "garbage";
    EXPECT_EQ(QVComClassIDFromProgID(u"Velmara.CharCodec.CP037.2", &clsid), QV_E_INVALID_DATA);
    EXPECT_EQ(QVComClassIDFromProgID(nullptr, &clsid), QV_E_POINTER);
    EXPECT_EQ(QVComClassIDFromProgID(u"..\\..", &clsid), QV_E_CLASSNOTREG);
}

TEST_F(Component, ALoadedModuleStaysUntilItSaysItCanUnload)
{
    registerSample();
    void* object = nullptr;
    ASSERT_EQ(QVModuleComCreateObject(QV_INVALID_HANDLE, &kCp037Class, nullptr,
                                      &qv::text::charset::qvcom::IQVByteToCharConverter::iid, &object),
              0);
    uint32_t freed = 7;
    EXPECT_EQ(QVComFreeUnusedLibraries(&freed), 0);
    EXPECT_EQ(freed, 0u); // the object holds its module
    auto* decoder = static_cast<qv::text::charset::qvcom::IQVByteToCharConverter*>(object);
    const char16_t* name = nullptr;
    EXPECT_EQ(decoder->GetEncodingName(&name), 0);
    EXPECT_EQ(std::u16string(name), u"CP037");
    decoder->Release();
    EXPECT_EQ(QVComFreeUnusedLibraries(&freed), 0);
    EXPECT_EQ(freed, 1u);
    EXPECT_EQ(QVComFreeUnusedLibraries(&freed), 0);
    EXPECT_EQ(freed, 0u);
}

TEST_F(Component, TheRegistrationToolReportsWhatWentWrong)
{
    EXPECT_EQ(qvtest::run({QVTEST_REGSVR}).status, 1);
    EXPECT_EQ(qvtest::run({QVTEST_REGSVR, "-s", "/nonexistent/module.so"}).status, 2);
    EXPECT_EQ(qvtest::run({QVTEST_REGSVR, "-s", QVTEST_QVCORE3}).status, 3);
    // Registration into a store that cannot be written fails in the module.
    std::fclose(std::fopen((m_dir + "/blocked").c_str(), "w"));
    setenv("QV_REGISTRY_DIR", (m_dir + "/blocked").c_str(), 1);
    EXPECT_EQ(qvtest::run({QVTEST_REGSVR, "-s", QVTEST_CP037_MODULE}).status, 4);
    setenv("QV_REGISTRY_DIR", m_dir.c_str(), 1);
}
