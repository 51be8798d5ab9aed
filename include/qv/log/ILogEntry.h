#ifndef QV_LOG_ILOGENTRY_H
#define QV_LOG_ILOGENTRY_H

#include <qv/collections/Set.h>
#include <qv/core/IQVUnknown.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/TextSpelling.h>
#include <qv/lang/String.h>

namespace qv {
namespace log {

// A log entry's native face: named fields holding objects.
class ILogEntry : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x03}};

    // Puts or replaces; the entry holds a reference on value.
    virtual void setField(const String& name, const Object* value) = 0;
    // The value, or an empty reference when there is no such field.
    virtual Reference<const Object> getField(const String& name) const = 0;
    virtual bool hasField(const String& name) const = 0;
    // The names in the entry's own (hash) order.
    virtual Reference<const collections::Set<String>> getFieldNames() const = 0;

    // Receives the fields of an entry one by one.
    class FieldVisitor {
    public:
        // value is what getField(name) gives, null for an empty reference;
        // both live at least until the call returns.
        virtual void visit(const String& name, const Object* value) = 0;

    protected:
        ~FieldVisitor() = default;
    };
    // Hands every field to visitor in getFieldNames() order. Exceptions from
    // visitor pass out. This default asks getFieldNames() and then
    // getField() for each name; an entry that can walk its own storage
    // overrides it, since a writer calls it for every entry it writes.
    virtual void visitFields(FieldVisitor& visitor) const
    {
        const Reference<const collections::Set<String>> names = getFieldNames();
        for (const String& name : *names)
            visitor.visit(name, getField(name).get());
    }

protected:
    ~ILogEntry() = default;
};

namespace qvcom {

// Walks the names of an entry's fields, in the entry's order.
class IFieldIterator : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x04}};

    // 0 (S_OK) while a name remains, 1 (S_FALSE) at the end.
    virtual Result HasNext() const = 0;
    // The next name and its length in UTF-16 units; the text stays valid as
    // long as the iterator lives. S_FALSE (name null, length 0) at the end.
    virtual Result Next(const char16_t** name, int32_t* length) = 0;
    // Back to the first name.
    virtual Result Reset() = 0;

protected:
    ~IFieldIterator() = default;
};

// A log entry's component face: NUL-terminated UTF-16 names, result codes,
// no exceptions.
class ILogEntry : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x05}};

    virtual Result SetField(const char16_t* name, IQVUnknown* value) = 0;
    // The field's value asked for iid; S_FALSE with *out null when there is
    // no such field.
    virtual Result GetField(const char16_t* name, const GUID& iid, void** out) const = 0;
    // 0 when the field is there, 1 when it is not.
    virtual Result HasField(const char16_t* name) const = 0;
    virtual Result GetFieldIterator(IFieldIterator** out) const = 0;

    template <class T, IfUShortText<T> = 0>
    Result SetField(const T* name, IQVUnknown* value)
    {
        return SetField(reinterpret_cast<const char16_t*>(name), value);
    }
    template <class T, IfUShortText<T> = 0>
    Result GetField(const T* name, const GUID& interfaceId, void** out) const
    {
        return GetField(reinterpret_cast<const char16_t*>(name), interfaceId, out);
    }
    template <class T, IfUShortText<T> = 0>
    Result HasField(const T* name) const
    {
        return HasField(reinterpret_cast<const char16_t*>(name));
    }

protected:
    ~ILogEntry() = default;
};

} // namespace qvcom
} // namespace log
} // namespace qv

#endif
