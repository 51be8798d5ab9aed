#ifndef QV_TEXT_CHARSET_BTCCOM_H
#define QV_TEXT_CHARSET_BTCCOM_H

#include <qv/core/Reference.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/qvcom/ConverterComponent.h>

namespace qv {
namespace text {
namespace charset {

// The decoder over an external converter component: every call goes on to
// the component's IQVByteToCharConverter, and its failure codes come back as the
// converters' exceptions (0x8BB34101 InvalidCharacterException, 0x8BB34102
// UnmappableCharacterException, anything else ResultException). The
// substitution settings are handed to the component whenever they change.
class QV_EXPORT BTCCom : public ByteToCharConverter {
public:
    // Takes a reference on component; a null one throws
    // ResultException(0x80070057).
    explicit BTCCom(qvcom::IQVByteToCharConverter* component);
    ~BTCCom() override;
    BTCCom(const BTCCom&) = delete;
    BTCCom& operator=(const BTCCom&) = delete;

    using ByteToCharConverter::convert;
    using ByteToCharConverter::flush;
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(char16_t* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;
    void setSubstitutionMode(bool on) override;
    using ByteToCharConverter::setSubstitutionChars;
    void setSubstitutionChars(const char16_t* values, int count) override;

    qvcom::IQVByteToCharConverter* getComponent() const noexcept { return m_component.get(); }

private:
    void passSubstitution();

    Reference<qvcom::IQVByteToCharConverter> m_component;
    const char16_t* m_name = nullptr;
    int32_t m_maxBytesPerChar = 0;
    int32_t m_maxCharsPerByte = 0;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
