#ifndef QV_TEXT_CHARSET_CTBCOM_H
#define QV_TEXT_CHARSET_CTBCOM_H

#include <qv/core/Reference.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qv/text/charset/qvcom/ConverterComponent.h>

namespace qv {
namespace text {
namespace charset {

// The encoder over an external converter component: every call goes on to
// the component's IQVCharToByteConverter, and its failure codes come back as the
// converters' exceptions (0x8BB34101 InvalidCharacterException, 0x8BB34102
// UnmappableCharacterException, anything else ResultException). The
// substitution settings are handed to the component whenever they change.
class QV_EXPORT CTBCom : public CharToByteConverter {
public:
    // Takes a reference on component; a null one throws
    // ResultException(0x80070057).
    explicit CTBCom(qvcom::IQVCharToByteConverter* component);
    ~CTBCom() override;
    CTBCom(const CTBCom&) = delete;
    CTBCom& operator=(const CTBCom&) = delete;

    using CharToByteConverter::convert;
    using CharToByteConverter::flush;
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;
    void setSubstitutionMode(bool on) override;
    using CharToByteConverter::setSubstitutionBytes;
    void setSubstitutionBytes(const signed char* values, int count) override;

    qvcom::IQVCharToByteConverter* getComponent() const noexcept { return m_component.get(); }

private:
    void passSubstitution();

    Reference<qvcom::IQVCharToByteConverter> m_component;
    const char16_t* m_name = nullptr;
    int32_t m_maxBytesPerChar = 0;
    int32_t m_maxCharsPerByte = 0;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
