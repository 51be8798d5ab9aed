#ifndef QV_TEXT_CHARSET_CHARTOBYTECONVERTER_H
#define QV_TEXT_CHARSET_CHARTOBYTECONVERTER_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/TextSpelling.h>

#include <cstddef>
#include <cstdint>

namespace qv {
namespace text {
namespace charset {

// An encoder: UTF-16 code units to bytes in some encoding.
//
// The mirror image of ByteToCharConverter, with the same contract: convert()
// reads in[*inPos, inEnd), writes out[*outPos, outEnd), stops when the input
// is used up or when the next output would not fit, leaves the positions at
// the first element not consumed / not written and returns the number of
// bytes written. A high surrogate at the end of the input waits inside the
// converter for its low half; a character whose bytes do not all fit is left,
// whole, for the next call (*inPos stays at its first unit). A call that throws leaves positions and state as they were
// when it began. A lone surrogate is malformed (InvalidCharacterException); a
// character the encoding cannot represent is unmappable and follows the
// substitution mode (default: the single byte '?').
class QV_EXPORT CharToByteConverter : public Object {
public:
    CharToByteConverter();
    CharToByteConverter(const CharToByteConverter& other);
    CharToByteConverter& operator=(const CharToByteConverter& other);
    ~CharToByteConverter() override;

    virtual int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                            int32_t outEnd) = 0;
    virtual int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) = 0;
    virtual void reset() = 0;
    virtual const char16_t* getEncodingName() = 0;
    virtual int getMaxBytesPerChar() = 0;
    virtual int getMaxCharsPerByte() = 0;

    virtual bool getSubstitutionMode();
    virtual void setSubstitutionMode(bool on);
    // With a null dest returns the length; otherwise copies min(max, length)
    // bytes and returns that number.
    virtual int getSubstitutionBytes(signed char* dest, int max);
    // At most 7 bytes; a longer or negative count throws RangeErrorException
    // and leaves the substitution unchanged.
    virtual void setSubstitutionBytes(const signed char* bytes, int count);

    // The overridable queries above are not const, yet callers ask const
    // converters too: these forward to them, so subclasses override only the
    // forms above.
    const char16_t* getEncodingName() const;
    int getMaxBytesPerChar() const;
    int getMaxCharsPerByte() const;
    bool getSubstitutionMode() const;
    int getSubstitutionBytes(signed char* dest, int max) const;

    template <class T, IfUShortText<T> = 0>
    int32_t convert(const T* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos, int32_t outEnd)
    {
        return convert(reinterpret_cast<const char16_t*>(in), inPos, inEnd, out, outPos, outEnd);
    }

    // A new encoder for the encoding name, looked up without regard to case
    // through the CodecManager; a null name gives getDefaultConverter(). An
    // unknown name throws UnknownEncodingException carrying the name.
    static Reference<CharToByteConverter> getConverter(const char16_t* name);
    template <class T, IfOtherNameText<T> = 0>
    static Reference<CharToByteConverter> getConverter(const T* name)
    {
        return getConverter(Utf16Name(name).get());
    }
    // The encoder of the process locale's code set, or ASCII when the registry
    // does not know that code set.
    static Reference<CharToByteConverter> getDefaultConverter();

    static constexpr int MAX_SUBSTITUTION_BYTES = 7;

protected:
    bool substitutionMode;
    signed char substitutionBytes[MAX_SUBSTITUTION_BYTES];
    int32_t substitutionCount;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
