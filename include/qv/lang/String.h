#ifndef QV_LANG_STRING_H
#define QV_LANG_STRING_H

#include <qv/core/Export.h>
#include <qv/core/RecycledAllocation.h>
#include <qv/core/TextSpelling.h>
#include <qv/util/BasicBuffer.h>
#include <qvcore3/qvcore3.h>

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>

// Constant text a String wraps without copying: the units and their count,
// not counting the NUL that must follow them.
struct STRUCT_QV_STR_LIT_INFO {
    const char16_t* text;
    int32_t length;
};

namespace qv {

// The descriptor of a u"..." literal, its length counted at compile time:
//   static const STRUCT_QV_STR_LIT_INFO hello = qv::strLit(u"hello");
template <size_t N>
constexpr STRUCT_QV_STR_LIT_INFO strLit(const char16_t (&text)[N]) noexcept
{
    return STRUCT_QV_STR_LIT_INFO{text, static_cast<int32_t>(N - 1)};
}

} // namespace qv

// A String over a u"..." literal, without a copy: QV_STR(u"hello").
#define QV_STR(literal) (::qv::String(::qv::strLit(literal)))

namespace qv {

// UTF-16 text in a reference-counted character buffer. Copies share the
// buffer; the first write of a String that is not its buffer's sole holder
// (or whose buffer is read-only) copies the text into a buffer of its own.
// Assignment copies the characters instead of sharing.
//
// Lengths and positions count UTF-16 units. A text length of -1 means
// NUL-terminated; a count or an end of -1 means up to the end. Positions
// beyond the text are clamped. The buffer always holds one unit more than the
// text: a terminating NUL.
//
// A String is also a character buffer (ICharBuffer): code that fills an
// ICharBuffer can fill a String.
//
// Not safe for concurrent mutation; copies in different threads may share a
// buffer.
class QV_EXPORT String : public util::AbstractCharBuffer {
public:
    enum AcquireMode {
        // Any value other than the three below copies as well.
        ACQUIRE_COPY = 0,
        // Given a buffer or a String: hold that very buffer. Given raw text: copy.
        ACQUIRE_SHARE = 1,
        // Wrap the caller's memory read-only, without a copy; the unit after
        // the wrapped run plays the terminator. The memory must outlive every
        // String sharing the wrap.
        ACQUIRE_WRAP = 2,
        // Copy, then upper-case the copy.
        ACQUIRE_COPY_UPPER = 3
    };

    enum TrimType { TRIM_LEADING = 1, TRIM_TRAILING = 2, TRIM_BOTH = 3 };

    class AnsiBytes;

    // A run of text handed to a query: a String, NUL-terminated units, or
    // units with a count ({pointer, count}). It points into its source,
    // which must outlive the call.
    class TextRef {
    public:
        TextRef(const String& text);
        TextRef(const char16_t* text, int32_t length = -1) noexcept
            : m_text(text), m_length(text ? (length < 0 ? QVStrLenW(text) : length) : 0)
        {}
        template <class T, IfUShortText<T> = 0>
        TextRef(const T* text, int32_t length = -1) noexcept : TextRef(reinterpret_cast<const char16_t*>(text), length)
        {}
        const char16_t* data() const noexcept { return m_text; }
        int32_t length() const noexcept { return m_length; }

    private:
        const char16_t* m_text;
        int32_t m_length;
    };

    // Empty: holds the shared read-only empty buffer; allocates nothing.
    String() noexcept;
    // Shares the source's buffer; nothing is copied.
    String(const String& other) noexcept;
    // Addition: takes over the source's buffer and leaves the source empty.
    String(String&& other) noexcept;
    // A copy of the text, with room for max(capacity, length + 1) units.
    // Empty (the shared buffer) when the length is below 1 and the capacity
    // below 1.
    String(const char16_t* text, int32_t length = -1, int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    String(const T* text, int32_t length = -1, int32_t capacity = 0)
        : String(reinterpret_cast<const char16_t*>(text), length, capacity)
    {}
    // A null pointer literal fits the wide and the narrow forms alike; it is
    // taken as wide text, so the String is empty.
    String(std::nullptr_t, int32_t length = -1, int32_t capacity = 0)
        : String(static_cast<const char16_t*>(nullptr), length, capacity)
    {}
    // count copies of c.
    String(char16_t c, int32_t count = 1, int32_t capacity = 0);
    // No text, room for capacity units.
    explicit String(int32_t capacity);
    // A narrow character would silently pick the capacity constructor.
    String(char c) = delete;
    String(AcquireMode mode, const char16_t* text, int32_t length = -1, int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    String(AcquireMode mode, const T* text, int32_t length = -1, int32_t capacity = 0)
        : String(mode, reinterpret_cast<const char16_t*>(text), length, capacity)
    {}
    // The region [begin, end) of source (end -1 or beyond: its length; begin
    // clamped to end). ACQUIRE_SHARE shares source's buffer when the region is
    // the whole text and copies the region otherwise (a buffer cannot be
    // shared in part); ACQUIRE_WRAP wraps the region read-only.
    String(AcquireMode mode, const String& source, int32_t begin = 0, int32_t end = -1, int32_t capacity = 0);
    // A copy of the buffer's units.
    explicit String(util::ICharBuffer* buffer);
    // ACQUIRE_SHARE holds the buffer itself, whose length must count a
    // terminating NUL as a String's does; ACQUIRE_WRAP wraps its units
    // read-only; other modes copy.
    String(AcquireMode mode, util::ICharBuffer* buffer);
    // Wraps the literal read-only; never copies it.
    String(const STRUCT_QV_STR_LIT_INFO& literal);
    // Addition: UTF-32 text (wchar_t on this platform), stored as UTF-16 with
    // surrogate pairs above U+FFFF; values that are no Unicode scalar value
    // become U+FFFD.
    String(const wchar_t* text, int32_t length = -1);
    // Addition.
    explicit String(const std::u16string& text);
    // Narrow text decoded with the named encoding (null: the default
    // encoding, the process locale's code set). length -1: NUL-terminated.
    // An unknown name throws UnknownEncodingException, malformed input
    // InvalidCharacterException; unmappable bytes follow the decoder's
    // substitution (U+FFFD). Explicit: decoding depends on the locale and may
    // throw, which an implicit conversion would hide.
    explicit String(const char* bytes, int32_t length = -1, const char16_t* encoding = nullptr, int32_t capacity = 0);
    explicit String(const signed char* bytes, int32_t length = -1, const char16_t* encoding = nullptr,
                    int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    explicit String(const char* bytes, int32_t length, const T* encoding, int32_t capacity = 0)
        : String(bytes, length, reinterpret_cast<const char16_t*>(encoding), capacity)
    {}
    template <class T, IfUShortText<T> = 0>
    explicit String(const signed char* bytes, int32_t length, const T* encoding, int32_t capacity = 0)
        : String(bytes, length, reinterpret_cast<const char16_t*>(encoding), capacity)
    {}
    ~String() override;

    // A String made with new is mostly a value handed to another thread
    // (a log entry's text, dropped by a queue's worker): its memory is
    // recycled across threads instead of crossing the allocator's locks both
    // ways. Objects of a larger derived class take the general allocator.
    QV_RECYCLED_ALLOCATION

    static String CQVString(const String& source);
    static String CQVString(AcquireMode mode, const String& source, int32_t begin = 0, int32_t end = -1,
                            int32_t capacity = 0);
    static String CQVString(const char16_t* text, int32_t length = -1, int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    static String CQVString(const T* text, int32_t length = -1, int32_t capacity = 0)
    {
        return CQVString(reinterpret_cast<const char16_t*>(text), length, capacity);
    }
    static String CQVString(AcquireMode mode, const char16_t* text, int32_t length = -1, int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    static String CQVString(AcquireMode mode, const T* text, int32_t length = -1, int32_t capacity = 0)
    {
        return CQVString(mode, reinterpret_cast<const char16_t*>(text), length, capacity);
    }
    static String CQVString(const char* bytes, int32_t length = -1, const char16_t* encoding = nullptr,
                            int32_t capacity = 0);
    static String CQVString(const signed char* bytes, int32_t length = -1, const char16_t* encoding = nullptr,
                            int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    static String CQVString(const char* bytes, int32_t length, const T* encoding, int32_t capacity = 0)
    {
        return CQVString(bytes, length, reinterpret_cast<const char16_t*>(encoding), capacity);
    }
    template <class T, IfUShortText<T> = 0>
    static String CQVString(const signed char* bytes, int32_t length, const T* encoding, int32_t capacity = 0)
    {
        return CQVString(bytes, length, reinterpret_cast<const char16_t*>(encoding), capacity);
    }

    // "true" or "false", wrapping constant text.
    static String valueOf(bool value);
    static String valueOf(char16_t value);
    static String valueOf(int value);
    static String valueOf(unsigned int value);
    static String valueOf(long value);
    static String valueOf(unsigned long value);
    static String valueOf(long long value);
    static String valueOf(unsigned long long value);
    // Both as "%g": six significant digits, exponent form below 1e-4 and from
    // 1e6; always with '.' whatever the process locale.
    static String valueOf(float value);
    static String valueOf(double value);

    // Assignment copies the characters into this String's own buffer.
    String& operator=(const String& other);
    String& operator=(const char16_t* text);
    template <class T, IfUShortText<T> = 0>
    String& operator=(const T* text)
    {
        return setTo(reinterpret_cast<const char16_t*>(text));
    }
    String& operator=(std::nullptr_t) { return setTo(static_cast<const char16_t*>(nullptr)); }
    String& operator=(char16_t c);
    // Narrow text in the default encoding.
    String& operator=(const char* bytes);
    String& operator=(const signed char* bytes);
    String& setTo(const String& other);
    String& setTo(const char16_t* text, int32_t length = -1);
    template <class T, IfUShortText<T> = 0>
    String& setTo(const T* text, int32_t length = -1)
    {
        return setTo(reinterpret_cast<const char16_t*>(text), length);
    }
    String& setTo(std::nullptr_t, int32_t length = -1) { return setTo(static_cast<const char16_t*>(nullptr), length); }
    String& setTo(char16_t c, int32_t repeat = 1);
    String& setTo(AcquireMode mode, const char16_t* text, int32_t length = -1, int32_t capacity = 0);
    template <class T, IfUShortText<T> = 0>
    String& setTo(AcquireMode mode, const T* text, int32_t length = -1, int32_t capacity = 0)
    {
        return setTo(mode, reinterpret_cast<const char16_t*>(text), length, capacity);
    }
    // Narrow text, as the narrow constructor decodes it. When decoding fails
    // the String keeps its text.
    String& setTo(const char* bytes, int32_t length = -1, const char16_t* encoding = nullptr);
    String& setTo(const signed char* bytes, int32_t length = -1, const char16_t* encoding = nullptr);
    template <class T, IfUShortText<T> = 0>
    String& setTo(const char* bytes, int32_t length, const T* encoding)
    {
        return setTo(bytes, length, reinterpret_cast<const char16_t*>(encoding));
    }
    template <class T, IfUShortText<T> = 0>
    String& setTo(const signed char* bytes, int32_t length, const T* encoding)
    {
        return setTo(bytes, length, reinterpret_cast<const char16_t*>(encoding));
    }
    // Shares other's buffer, as the copy constructor does.
    String& setAddRef(const String& other);

    // Every editing operation below is one call of the general replace.
    String& replace(int32_t start, int32_t count, const char16_t* text, int32_t textLength = -1, int32_t textStart = 0);
    template <class T, IfUShortText<T> = 0>
    String& replace(int32_t start, int32_t count, const T* text, int32_t textLength = -1, int32_t textStart = 0)
    {
        return replace(start, count, reinterpret_cast<const char16_t*>(text), textLength, textStart);
    }
    String& replace(int32_t start, int32_t count, const String& text, int32_t textStart = 0);
    String& replace(int32_t start, int32_t count, char16_t c, int32_t repeat = 1);

    String& append(const String& text);
    String& append(const char16_t* text, int32_t length = -1);
    template <class T, IfUShortText<T> = 0>
    String& append(const T* text, int32_t length = -1)
    {
        return append(reinterpret_cast<const char16_t*>(text), length);
    }
    String& append(char16_t c, int32_t repeat = 1);
    String& operator+=(const String& text) { return append(text); }
    String& operator+=(const char16_t* text) { return append(text); }
    template <class T, IfUShortText<T> = 0>
    String& operator+=(const T* text)
    {
        return append(text);
    }
    String& operator+=(char16_t c) { return append(c); }
    String& prepend(const String& text);
    String& prepend(const char16_t* text, int32_t length = -1);
    template <class T, IfUShortText<T> = 0>
    String& prepend(const T* text, int32_t length = -1)
    {
        return prepend(reinterpret_cast<const char16_t*>(text), length);
    }
    String& prepend(char16_t c, int32_t repeat = 1);
    String& insert(int32_t position, const String& text);
    String& insert(int32_t position, const char16_t* text, int32_t length = -1);
    template <class T, IfUShortText<T> = 0>
    String& insert(int32_t position, const T* text, int32_t length = -1)
    {
        return insert(position, reinterpret_cast<const char16_t*>(text), length);
    }
    String& insert(int32_t position, char16_t c, int32_t repeat = 1);
    String& remove(int32_t start, int32_t count = -1);
    // Cuts to newLength, or pads with fill up to it.
    String& resize(int32_t newLength, char16_t fill);
    String& clear();
    // index must lie in [0, length): otherwise RangeErrorException.
    String& setCharAt(int32_t index, char16_t c);
    // Every unit equal to from becomes to.
    String& translate(char16_t from, char16_t to);
    // Every unit found at index i of from becomes to[i]; units of from
    // without a counterpart in to are left as they are.
    String& translate(TextRef from, TextRef to);
    String& toLower();
    String& toUpper();
    // Trims space, tab, carriage return and line feed, nothing else.
    String& trim(TrimType type = TRIM_BOTH);
    String& trim(char16_t c, TrimType type = TRIM_BOTH);
    String& trim(const char16_t* set, int32_t setLength, TrimType type = TRIM_BOTH);
    template <class T, IfUShortText<T> = 0>
    String& trim(const T* set, int32_t setLength, TrimType type = TRIM_BOTH)
    {
        return trim(reinterpret_cast<const char16_t*>(set), setLength, type);
    }
    String& trim(const String& set, TrimType type = TRIM_BOTH);
    // A NUL-terminated set. Without these, trim(u"xy", TRIM_LEADING) would
    // take the trim type for the set's length.
    String& trim(const char16_t* set, TrimType type = TRIM_BOTH) { return trim(set, -1, type); }
    template <class T, IfUShortText<T> = 0>
    String& trim(const T* set, TrimType type = TRIM_BOTH)
    {
        return trim(set, -1, type);
    }

    // Replaces this String's text with pattern, each "{n}" replaced by the
    // n-th argument (a char16_t or unsigned short pointer, a String, or
    // nullptr for empty text). Indexes are taken in order 0, 1, 2 ... and the
    // scan stops at the first index that does not occur in the pattern, or
    // whose argument is missing; what remains is left as it is. Argument text
    // is inserted literally, never searched for placeholders.
    template <class... Args>
    const String& format(const char16_t* pattern, int32_t patternLength, const Args&... args)
    {
        const char16_t* list[sizeof...(Args) + 1] = {formatArgument(args)..., nullptr};
        return formatArray(pattern, patternLength, list, static_cast<int32_t>(sizeof...(Args)));
    }
    template <class... Args>
    const String& format(const unsigned short* pattern, int32_t patternLength, const Args&... args)
    {
        return format(reinterpret_cast<const char16_t*>(pattern), patternLength, args...);
    }
    template <class... Args>
    const String& format(const String& pattern, const Args&... args)
    {
        const char16_t* list[sizeof...(Args) + 1] = {formatArgument(args)..., nullptr};
        return formatArray(pattern, list, static_cast<int32_t>(sizeof...(Args)));
    }
    // The same over a started variable-argument list of const char16_t*
    // pointers; the caller must pass one for every index in use.
    const String& formatv(const char16_t* pattern, int32_t patternLength, va_list arguments);
    template <class T, IfUShortText<T> = 0>
    const String& formatv(const T* pattern, int32_t patternLength, va_list arguments)
    {
        return formatv(reinterpret_cast<const char16_t*>(pattern), patternLength, arguments);
    }
    const String& formatv(const String& pattern, va_list arguments);
    // The engine behind format: count arguments in list.
    const String& formatArray(const char16_t* pattern, int32_t patternLength, const char16_t* const* list,
                              int32_t count);
    const String& formatArray(const String& pattern, const char16_t* const* list, int32_t count);

    int32_t getLength() const override;
    // index in [0, length]; index length reads the terminator unit. Otherwise
    // RangeErrorException.
    char16_t getCharAt(int32_t index) const;
    char16_t operator[](int32_t index) const { return getCharAt(index); }

    // Equal to another String, case-sensitively; false for other objects.
    bool equals(const Object& other) const override;
    bool equals(TextRef text, bool ignoreCase = false) const;
    bool equals(const char16_t* text, bool ignoreCase = false) const;
    template <class T, IfUShortText<T> = 0>
    bool equals(const T* text, bool ignoreCase = false) const
    {
        return equals(reinterpret_cast<const char16_t*>(text), ignoreCase);
    }
    // Wide text with its length (-1: NUL-terminated). The pointer-and-bool
    // overloads keep s.equals(u"x", true) meaning "ignore case".
    bool equals(const char16_t* text, int32_t textLength, bool ignoreCase = false) const
    {
        return equals(TextRef(text, textLength), ignoreCase);
    }
    template <class T, IfUShortText<T> = 0>
    bool equals(const T* text, int32_t textLength, bool ignoreCase = false) const
    {
        return equals(TextRef(text, textLength), ignoreCase);
    }
    // -1 or 1 at the first differing unit (unsigned 16-bit order), otherwise
    // the difference of the lengths.
    int32_t compare(TextRef text, bool ignoreCase = false) const;
    int32_t compare(const char16_t* text, bool ignoreCase = false) const { return compare(TextRef(text), ignoreCase); }
    template <class T, IfUShortText<T> = 0>
    int32_t compare(const T* text, bool ignoreCase = false) const
    {
        return compare(TextRef(text), ignoreCase);
    }
    int32_t compare(const char16_t* text, int32_t textLength, bool ignoreCase = false) const
    {
        return compare(TextRef(text, textLength), ignoreCase);
    }
    template <class T, IfUShortText<T> = 0>
    int32_t compare(const T* text, int32_t textLength, bool ignoreCase = false) const
    {
        return compare(TextRef(text, textLength), ignoreCase);
    }
    // With another String, case-sensitively; other objects compare by address.
    int compareTo(const Object& other) const override;
    // The region [start, start + count) against text from textStart.
    bool regionMatches(int32_t start, int32_t count, TextRef text, int32_t textStart = 0,
                       bool ignoreCase = false) const;
    bool regionMatches(int32_t start, int32_t count, const char16_t* text, int32_t textLength, int32_t textStart,
                       bool ignoreCase = false) const;
    template <class T, IfUShortText<T> = 0>
    bool regionMatches(int32_t start, int32_t count, const T* text, int32_t textLength, int32_t textStart,
                       bool ignoreCase = false) const
    {
        return regionMatches(start, count, reinterpret_cast<const char16_t*>(text), textLength, textStart, ignoreCase);
    }
    int32_t regionCompare(int32_t start, int32_t count, TextRef text, int32_t textStart = 0,
                          bool ignoreCase = false) const;
    int32_t regionCompare(int32_t start, int32_t count, const char16_t* text, int32_t textLength, int32_t textStart,
                          bool ignoreCase = false) const;
    template <class T, IfUShortText<T> = 0>
    int32_t regionCompare(int32_t start, int32_t count, const T* text, int32_t textLength, int32_t textStart,
                          bool ignoreCase = false) const
    {
        return regionCompare(start, count, reinterpret_cast<const char16_t*>(text), textLength, textStart, ignoreCase);
    }
    bool startsWith(TextRef prefix, bool ignoreCase = false) const;
    bool endsWith(TextRef suffix, bool ignoreCase = false) const;
    bool contains(TextRef text, bool ignoreCase = false) const;
    bool contains(char16_t c, bool ignoreCase = false) const;
    bool startsWith(const char16_t* text, bool ignoreCase = false) const
    {
        return startsWith(TextRef(text), ignoreCase);
    }
    template <class T, IfUShortText<T> = 0>
    bool startsWith(const T* text, bool ignoreCase = false) const
    {
        return startsWith(TextRef(text), ignoreCase);
    }
    bool startsWith(const char16_t* text, int32_t textLength, bool ignoreCase = false) const
    {
        return startsWith(TextRef(text, textLength), ignoreCase);
    }
    template <class T, IfUShortText<T> = 0>
    bool startsWith(const T* text, int32_t textLength, bool ignoreCase = false) const
    {
        return startsWith(TextRef(text, textLength), ignoreCase);
    }
    bool endsWith(const char16_t* text, bool ignoreCase = false) const { return endsWith(TextRef(text), ignoreCase); }
    template <class T, IfUShortText<T> = 0>
    bool endsWith(const T* text, bool ignoreCase = false) const
    {
        return endsWith(TextRef(text), ignoreCase);
    }
    bool endsWith(const char16_t* text, int32_t textLength, bool ignoreCase = false) const
    {
        return endsWith(TextRef(text, textLength), ignoreCase);
    }
    template <class T, IfUShortText<T> = 0>
    bool endsWith(const T* text, int32_t textLength, bool ignoreCase = false) const
    {
        return endsWith(TextRef(text, textLength), ignoreCase);
    }
    bool contains(const char16_t* text, bool ignoreCase = false) const { return contains(TextRef(text), ignoreCase); }
    template <class T, IfUShortText<T> = 0>
    bool contains(const T* text, bool ignoreCase = false) const
    {
        return contains(TextRef(text), ignoreCase);
    }
    bool contains(const char16_t* text, int32_t textLength, bool ignoreCase = false) const
    {
        return contains(TextRef(text, textLength), ignoreCase);
    }
    template <class T, IfUShortText<T> = 0>
    bool contains(const T* text, int32_t textLength, bool ignoreCase = false) const
    {
        return contains(TextRef(text, textLength), ignoreCase);
    }

    // Searches give the index of the match's first unit, or -1. Forward
    // searches start at from; backward ones at from (-1: the end) and go
    // towards the start.
    int32_t indexOf(char16_t c, int32_t from = 0, bool ignoreCase = false) const;
    int32_t indexOf(TextRef text, int32_t from = 0, bool ignoreCase = false) const;
    int32_t lastIndexOf(char16_t c, int32_t from = -1, bool ignoreCase = false) const;
    int32_t lastIndexOf(TextRef text, int32_t from = -1, bool ignoreCase = false) const;
    int32_t findFirstOf(TextRef set, int32_t from = 0, bool ignoreCase = false) const;
    int32_t findFirstNotOf(TextRef set, int32_t from = 0, bool ignoreCase = false) const;
    int32_t findLastOf(TextRef set, int32_t from = -1, bool ignoreCase = false) const;
    int32_t findLastNotOf(TextRef set, int32_t from = -1, bool ignoreCase = false) const;
    // findFirstOf that always respects case: "Case" means "case-sensitive",
    // not "ignoring case". The name is kept because callers use it.
    int32_t findFirstOfCase(TextRef set, int32_t from = 0) const;
    // The searches over wide text with its length (-1: NUL-terminated). Every
    // argument is required: with defaults, s.indexOf(u"x", 2) would take 2 as
    // the length instead of the start.
    template <class T, IfUtf16Text<T> = 0>
    int32_t indexOf(const T* text, int32_t textLength, int32_t from, bool ignoreCase) const
    {
        return indexOf(TextRef(text, textLength), from, ignoreCase);
    }
    template <class T, IfUtf16Text<T> = 0>
    int32_t lastIndexOf(const T* text, int32_t textLength, int32_t from, bool ignoreCase) const
    {
        return lastIndexOf(TextRef(text, textLength), from, ignoreCase);
    }
    template <class T, IfUtf16Text<T> = 0>
    int32_t findFirstOf(const T* text, int32_t textLength, int32_t from, bool ignoreCase) const
    {
        return findFirstOf(TextRef(text, textLength), from, ignoreCase);
    }
    template <class T, IfUtf16Text<T> = 0>
    int32_t findFirstNotOf(const T* text, int32_t textLength, int32_t from, bool ignoreCase) const
    {
        return findFirstNotOf(TextRef(text, textLength), from, ignoreCase);
    }
    template <class T, IfUtf16Text<T> = 0>
    int32_t findLastOf(const T* text, int32_t textLength, int32_t from, bool ignoreCase) const
    {
        return findLastOf(TextRef(text, textLength), from, ignoreCase);
    }
    template <class T, IfUtf16Text<T> = 0>
    int32_t findLastNotOf(const T* text, int32_t textLength, int32_t from, bool ignoreCase) const
    {
        return findLastNotOf(TextRef(text, textLength), from, ignoreCase);
    }
    int32_t findFirstOfCase(const char16_t* set, int32_t setLength, int32_t from) const
    {
        return findFirstOfCase(TextRef(set, setLength), from);
    }
    template <class T, IfUShortText<T> = 0>
    int32_t findFirstOfCase(const T* set, int32_t setLength, int32_t from) const
    {
        return findFirstOfCase(TextRef(set, setLength), from);
    }

    // A copy of [begin, end): end -1 or beyond means the length, begin is
    // clamped to end.
    String substring(int32_t begin, int32_t end = -1) const;

    uint32_t hashCode() const override;
    // Samples long texts: every unit up to 63 units, every second one from 64,
    // every third from 96, and so on.
    uint32_t hashCode(bool ignoreCase) const;

    using Object::toString;
    // Shares this String's buffer.
    String toString() override;
    // A heap String sharing the buffer. On an object of a class derived from
    // String it throws CloneNotSupportedException.
    Object* clone() const override;

    // The NUL-terminated units, without a lock.
    const char16_t* getData() const override;
    const char16_t* getDataT(int) const { return getData(); }
    const char16_t* getReadLockT(int) const { return getReadLock(); }
    // Narrow, in the default encoding: getBytes(nullptr) and
    // getBytesReadLock(nullptr).
    const char* getDataT(bool) const { return getBytes(nullptr); }
    const char* getReadLockT(bool) const { return getBytesReadLock(nullptr); }

    // Narrow output. Encoding names are looked up without regard to case;
    // null is the default encoding. Characters the encoding lacks follow the
    // encoder's substitution ('?'); a lone surrogate throws
    // InvalidCharacterException.
    //
    // The NUL-terminated bytes, owned by this String and kept until its next
    // write or a conversion to another encoding: asking again for the same
    // encoding (ASCII case ignored) converts nothing.
    const char* getBytes(const char16_t* encoding = nullptr) const;
    template <class T, IfUShortText<T> = 0>
    const char* getBytes(const T* encoding) const
    {
        return getBytes(reinterpret_cast<const char16_t*>(encoding));
    }
    // The same, after taking this String's read lock; the caller releases it
    // with releaseReadLock().
    const char* getBytesReadLock(const char16_t* encoding = nullptr) const;
    template <class T, IfUShortText<T> = 0>
    const char* getBytesReadLock(const T* encoding) const
    {
        return getBytesReadLock(reinterpret_cast<const char16_t*>(encoding));
    }
    // Fills buffer with the bytes and a NUL after them; its length becomes
    // the byte count. On failure its length stays as it was.
    void getBytes(util::IByteBuffer* buffer, const char16_t* encoding) const;
    template <class T, IfUShortText<T> = 0>
    void getBytes(util::IByteBuffer* buffer, const T* encoding) const
    {
        getBytes(buffer, reinterpret_cast<const char16_t*>(encoding));
    }
    // Into the caller's memory: the bytes and a NUL, returning the byte count.
    // When they do not fit into capacity bytes, throws
    // ResultException(0x80004009) with destination holding an empty text
    // (when capacity is at least 1): a cut-off prefix could end inside a
    // character or leave a stateful encoding open.
    int32_t getBytes(char* destination, int32_t capacity, const char16_t* encoding = nullptr) const;
    int32_t getBytes(signed char* destination, int32_t capacity, const char16_t* encoding = nullptr) const;
    template <class T, IfUShortText<T> = 0>
    int32_t getBytes(char* destination, int32_t capacity, const T* encoding) const
    {
        return getBytes(destination, capacity, reinterpret_cast<const char16_t*>(encoding));
    }
    template <class T, IfUShortText<T> = 0>
    int32_t getBytes(signed char* destination, int32_t capacity, const T* encoding) const
    {
        return getBytes(destination, capacity, reinterpret_cast<const char16_t*>(encoding));
    }
    const char16_t* getReadLock() const override;
    void releaseReadLock() const override;
    // Always true: a String copies its text before writing when it must.
    bool isWritable() const override;
    // Room for capacity units (the NUL comes on top) after copy-on-write.
    char16_t* getWriteLock(int32_t capacity) override;
    char16_t* ensureCapacity(int32_t capacity) override;
    // newLength -1: measure the written text up to its NUL.
    void releaseWriteLock(int32_t newLength) override;
    void freeExtra() override;

    // The interface operations are those of AbstractCharBuffer over the
    // operations above; these two answer directly.
    int32_t GetLength() const override;
    const char16_t* GetData() const override;

    // Additions for interoperation, tests and demonstrations.
    std::u16string toU16String() const;
    // UTF-8; unpaired surrogates become U+FFFD.
    std::string toUtf8() const;

private:
    static const char16_t* formatArgument(const char16_t* text) noexcept { return text; }
    static const char16_t* formatArgument(const unsigned short* text) noexcept
    {
        return reinterpret_cast<const char16_t*>(text);
    }
    static const char16_t* formatArgument(std::nullptr_t) noexcept { return nullptr; }
    static const char16_t* formatArgument(const String& text) { return text.getData(); }

    void holdEmpty() noexcept;
    void holdNew(const char16_t* text, int32_t length, int32_t capacity);
    void holdWrap(const char16_t* text, int32_t length);
    void holdShared(util::ICharBuffer* buffer, util::RWCharBuffer* own) noexcept;
    void hold(util::ICharBuffer* buffer, util::RWCharBuffer* own) noexcept;
    void initRegion(AcquireMode mode, const String& source, int32_t begin, int32_t end, int32_t capacity);
    void initText(AcquireMode mode, const char16_t* text, int32_t length, int32_t capacity);
    void internalSetTo(const char* bytes, int32_t length, const char16_t* encoding, int32_t capacity);
    inline void dropNarrow() const noexcept;
    bool claimSole();
    void copyOnWrite(int32_t capacity);
    template <class Put>
    void rebuild(int32_t length, int32_t start, int32_t count, int32_t inserted, int32_t newLength, const Put& put);
    char16_t* lockForWrite(int32_t capacity);
    void unlockAfterWrite(char16_t* data, int32_t newLength);
    void markShared() const noexcept { m_exclusive.store(false, std::memory_order_relaxed); }
    // Inline: the write and search paths call them for every operation.
    int32_t currentLength() const noexcept
    {
        int32_t n = m_own ? m_own->util::RWCharBuffer::GetLength() : m_buffer->GetLength();
        return n > 0 ? n - 1 : 0;
    }
    const char16_t* currentData() const noexcept
    {
        return m_own ? m_own->util::RWCharBuffer::GetData() : m_buffer->GetData();
    }
    static int32_t clampStart(int32_t start, int32_t length) noexcept
    {
        return (start < 0 || start > length) ? length : start;
    }
    String& replaceRun(int32_t start, int32_t count, const char16_t* run, int32_t inserted);
    String& replaceFill(int32_t start, int32_t count, char16_t c, int32_t repeat);
    template <class InSet>
    String& trimWith(const InSet& inSet, TrimType type);
    template <class NextArgument>
    void formatWith(const char16_t* pattern, int32_t length, NextArgument& next);
    bool equalsRun(const char16_t* text, int32_t length, bool ignoreCase) const;

    // The held buffer, never null; its length counts the NUL.
    util::ICharBuffer* m_buffer;
    // The last narrow conversion and its encoding, or null. Filled by the
    // const getBytes, like any cache.
    mutable AnsiBytes* m_narrow;
    // Reserved, always null.
    void* m_reserved;
    // m_buffer itself when it is a RWCharBuffer this String made, so that the
    // write path needs no interface calls; null otherwise.
    util::RWCharBuffer* m_own;
    // True while m_own is known to be held by this String alone: set when the
    // buffer is made or found sole, cleared whenever the buffer is shared out.
    mutable std::atomic<bool> m_exclusive;
};

// The narrow-text cache of a String: the bytes of the last conversion and the
// encoding they were made for (null: the default encoding).
class QV_EXPORT String::AnsiBytes : public util::RWByteBuffer {
public:
    // Keeps a copy of the name.
    explicit AnsiBytes(const char16_t* encoding);
    template <class T, IfUShortText<T> = 0>
    explicit AnsiBytes(const T* encoding) : AnsiBytes(reinterpret_cast<const char16_t*>(encoding))
    {}
    AnsiBytes(const AnsiBytes&) = delete;
    AnsiBytes& operator=(const AnsiBytes&) = delete;
    ~AnsiBytes() override;

    const char16_t* getEncoding() const noexcept { return m_encoding; }
    // True when both names are null, or both are set and equal with 'a' to
    // 'z' folded to upper case (every other unit compares by value).
    bool encodingEquals(const char16_t* encoding) const noexcept;
    template <class T, IfUShortText<T> = 0>
    bool encodingEquals(const T* encoding) const noexcept
    {
        return encodingEquals(reinterpret_cast<const char16_t*>(encoding));
    }

private:
    char16_t* m_encoding;
};

inline void String::dropNarrow() const noexcept
{
    if (m_narrow) {
        m_narrow->Release();
        m_narrow = nullptr;
    }
}

// Inline, with the buffer's count changed without a virtual call when it is
// one of our own: copying is the String's most frequent operation.
inline String::String(const String& other) noexcept
    : util::AbstractCharBuffer(), m_buffer(other.m_buffer), m_narrow(nullptr), m_reserved(nullptr), m_own(other.m_own),
      m_exclusive(false)
{
    if (m_own)
        m_own->util::RWCharBuffer::AddRef();
    else
        m_buffer->AddRef();
    other.markShared();
}

inline String::~String()
{
    dropNarrow();
    if (m_own)
        m_own->util::RWCharBuffer::Release();
    else if (m_buffer)
        m_buffer->Release();
}

inline String::TextRef::TextRef(const String& text) : m_text(text.currentData()), m_length(text.currentLength()) {}

QV_EXPORT bool operator==(const String& a, const String& b);
QV_EXPORT bool operator==(const String& a, const char16_t* b);
inline bool operator==(const char16_t* a, const String& b)
{
    return b == a;
}
inline bool operator!=(const String& a, const String& b)
{
    return !(a == b);
}
inline bool operator!=(const String& a, const char16_t* b)
{
    return !(a == b);
}
inline bool operator!=(const char16_t* a, const String& b)
{
    return !(b == a);
}
QV_EXPORT bool operator<(const String& a, const String& b);

} // namespace qv

#endif
