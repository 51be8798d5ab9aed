#ifndef QVCL3_EXAMPLES_CP037_CP037CONVERTER_H
#define QVCL3_EXAMPLES_CP037_CP037CONVERTER_H

#include <qv/core/ComObject.h>
#include <qv/text/charset/qvcom/ConverterComponent.h>

// IBM EBCDIC code page 037 (US/Canada) as a converter component: one class
// that decodes and encodes, registered as "Velmara.CharCodec.CP037". The code
// page maps its 256 bytes one to one onto U+0000..U+00FF, so decoding never
// fails and encoding fails only for code units above U+00FF (each unit on its
// own: a surrogate pair is two unmappable units).
class CP037Converter : public qv::ComObject,
                       public qv::text::charset::qvcom::IQVByteToCharConverter,
                       public qv::text::charset::qvcom::IQVCharToByteConverter {
public:
    // {314A70D4-DE93-4784-80D7-6DCBECC2BC70}
    static constexpr GUID clsid = {0x314A70D4, 0xDE93, 0x4784, {0x80, 0xD7, 0x6D, 0xCB, 0xEC, 0xC2, 0xBC, 0x70}};

    CP037Converter() noexcept;

    static const char16_t* GetComProgID() noexcept { return u"Velmara.CharCodec.CP037.1"; }
    static const char16_t* GetComVersionIndependentProgID() noexcept { return u"Velmara.CharCodec.CP037"; }
    static const char16_t* GetComDescription() noexcept { return u"IBM EBCDIC code page 037 converter"; }
    static const char16_t* GetComObjectVersion() noexcept { return u"1.0"; }

    QV_DECLARE_INTERFACE_MAP()

    qv::Result Convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                       int32_t outEnd) override;
    qv::Result Flush(char16_t* out, int32_t* outPos, int32_t outEnd) override;
    qv::Result SetSubstitution(int32_t mode, const char16_t* chars, int32_t count) override;

    qv::Result Convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                       int32_t outEnd) override;
    qv::Result Flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    qv::Result SetSubstitution(int32_t mode, const signed char* bytes, int32_t count) override;

    qv::Result Reset() override;
    qv::Result GetEncodingName(const char16_t** name) const override;
    qv::Result GetMaxBytesPerChar(int32_t* count) const override;
    qv::Result GetMaxCharsPerByte(int32_t* count) const override;

private:
    // Only the encoder ever substitutes: every byte decodes.
    bool m_substituteBytes;
    int32_t m_substitutionCount;
    signed char m_substitution;
};

#endif
