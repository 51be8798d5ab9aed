#ifndef QV_TEXT_CHARSET_BYTETOCHARCONVERTER_H
#define QV_TEXT_CHARSET_BYTETOCHARCONVERTER_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/TextSpelling.h>

#include <cstddef>
#include <cstdint>

namespace qv {
namespace text {
namespace charset {

// A decoder: bytes in some encoding to UTF-16 code units.
//
// convert() reads in[*inPos, inEnd) and writes out[*outPos, outEnd). It stops
// when the input is used up or when the next output would not fit, leaves
// both positions at the first element not consumed / not written and returns
// the number of code units it wrote. A multi-byte sequence split across calls
// stays inside the converter; a code point whose UTF-16 form does not fit
// into what is left of the output is not started (a supplementary character
// needs two free slots). flush() reports what is still unfinished at the end
// of the input, reset() forgets it.
//
// A call that throws leaves *inPos, *outPos and the converter's state as they
// were when the call began; code units before the offending input may already
// have been stored in out. Malformed input throws InvalidCharacterException.
// Input that the encoding defines but that has no Unicode mapping is
// "unmappable": with substitution off it throws UnmappableCharacterException;
// with substitution on a one-unit substitution is written in its place and any
// other substitution length drops it.
class QV_EXPORT ByteToCharConverter : public Object {
public:
    ByteToCharConverter();
    ByteToCharConverter(const ByteToCharConverter& other);
    ByteToCharConverter& operator=(const ByteToCharConverter& other);
    ~ByteToCharConverter() override;

    virtual int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                            int32_t outEnd) = 0;
    virtual int32_t flush(char16_t* out, int32_t* outPos, int32_t outEnd) = 0;
    virtual void reset() = 0;
    virtual const char16_t* getEncodingName() = 0;
    virtual int getMaxBytesPerChar() = 0;
    virtual int getMaxCharsPerByte() = 0;

    virtual bool getSubstitutionMode();
    virtual void setSubstitutionMode(bool on);
    // With a null dest returns the length; otherwise copies min(max, length)
    // code units and returns that number.
    virtual int getSubstitutionChars(char16_t* dest, int max);
    // At most 3 code units; a longer or negative count throws
    // RangeErrorException and leaves the substitution unchanged.
    virtual void setSubstitutionChars(const char16_t* chars, int count);

    // The overridable queries above are not const, yet callers ask const
    // converters too: these forward to them, so subclasses override only the
    // forms above.
    const char16_t* getEncodingName() const;
    int getMaxBytesPerChar() const;
    int getMaxCharsPerByte() const;
    bool getSubstitutionMode() const;
    int getSubstitutionChars(char16_t* dest, int max) const;

    template <class T, IfUShortText<T> = 0>
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, T* out, int32_t* outPos, int32_t outEnd)
    {
        return convert(in, inPos, inEnd, reinterpret_cast<char16_t*>(out), outPos, outEnd);
    }
    template <class T, IfUShortText<T> = 0>
    int32_t flush(T* out, int32_t* outPos, int32_t outEnd)
    {
        return flush(reinterpret_cast<char16_t*>(out), outPos, outEnd);
    }
    template <class T, IfUShortText<T> = 0>
    int getSubstitutionChars(T* dest, int max) const
    {
        return getSubstitutionChars(reinterpret_cast<char16_t*>(dest), max);
    }
    template <class T, IfUShortText<T> = 0>
    void setSubstitutionChars(const T* chars, int count)
    {
        setSubstitutionChars(reinterpret_cast<const char16_t*>(chars), count);
    }

    // A new decoder for the encoding name, looked up without regard to case
    // through the CodecManager; a null name gives getDefaultConverter(). An
    // unknown name throws UnknownEncodingException carrying the name.
    static Reference<ByteToCharConverter> getConverter(const char16_t* name);
    template <class T, IfOtherNameText<T> = 0>
    static Reference<ByteToCharConverter> getConverter(const T* name)
    {
        return getConverter(Utf16Name(name).get());
    }
    // The decoder of the process locale's code set, or ASCII when the registry
    // does not know that code set.
    static Reference<ByteToCharConverter> getDefaultConverter();

    static constexpr int MAX_SUBSTITUTION_CHARS = 3;

protected:
    bool substitutionMode;
    char16_t substitutionChars[MAX_SUBSTITUTION_CHARS];
    int32_t substitutionCount;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
