#ifndef QV_UTIL_PROPERTYSET_H
#define QV_UTIL_PROPERTYSET_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>
#include <qv/util/Property.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace qv {
namespace util {

// Told of every change of a property set: oldValue is null for a property
// that is new, newValue null for one removed. Listeners are called in the
// order they were added, after the change, on the changing thread.
class QV_EXPORT IPropertyChangeListener {
public:
    virtual void propertyChanged(const String& name, const Object* oldValue, const Object* newValue) = 0;

protected:
    ~IPropertyChangeListener() = default;
};

// Named, typed values kept in the order they were first set. Typed getters
// convert where the conversion is exact (a String "42" read as an integer,
// an integer read as a double) and throw CastFailedException where it is
// not; an absent name gives the caller's default. Not synchronised.
//
// Files: load/store use the properties file syntax (UTF-8; every value
// comes back as a String); loadXml/storeXml keep each value's type:
//   <?xml version="1.0" encoding="UTF-8"?>
//   <properties>
//     <property name="port" type="Integer32">80</property>
//   </properties>
// with the types String, Boolean, Integer8..64, UInteger8..64, Float and
// Double.
class QV_EXPORT PropertySet : public Object {
public:
    PropertySet();
    PropertySet(const PropertySet& other);
    PropertySet& operator=(const PropertySet& other);
    ~PropertySet() override;

    // A null value removes the property.
    void setProperty(const String& name, const Reference<Object>& value);
    void setString(const String& name, const String& value);
    void setInt(const String& name, int32_t value);
    void setInt64(const String& name, int64_t value);
    void setDouble(const String& name, double value);
    void setBool(const String& name, bool value);

    // Null when absent.
    Reference<Object> getProperty(const String& name) const;
    bool contains(const String& name) const;
    // False when there was none.
    bool remove(const String& name);
    void clear();
    int32_t size() const;
    // In the order the properties were first set.
    std::vector<String> getNames() const;
    std::vector<Reference<Property>> getProperties() const;

    String getString(const String& name, const String& defaultValue = String()) const;
    int32_t getInt(const String& name, int32_t defaultValue) const;
    int64_t getInt64(const String& name, int64_t defaultValue) const;
    double getDouble(const String& name, double defaultValue) const;
    bool getBool(const String& name, bool defaultValue) const;

    // The listener stays the caller's; it must be removed before it goes.
    void addListener(IPropertyChangeListener* listener);
    void removeListener(IPropertyChangeListener* listener);

    // Adds (and replaces) what the file holds; nothing changes when it
    // fails: IoException naming the file, PropertiesFormatException naming
    // the line.
    void load(const String& path);
    void loadText(const String& text, const String& source);
    void store(const String& path, const String& comment = String()) const;
    String storeText(const String& comment = String()) const;
    void loadXml(const String& path);
    void loadXmlText(const String& text, const String& source);
    void storeXml(const String& path) const;
    String storeXmlText() const;

private:
    void notify(const String& name, const Object* oldValue, const Object* newValue);
    void putAll(const std::vector<std::pair<String, Reference<Object>>>& values);

    std::vector<Reference<Property>> m_properties;
    std::map<String, size_t> m_index;
    std::vector<IPropertyChangeListener*> m_listeners;
};

} // namespace util
} // namespace qv

#endif
