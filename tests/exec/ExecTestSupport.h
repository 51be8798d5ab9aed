#ifndef QVCL3_TESTS_EXECTESTSUPPORT_H
#define QVCL3_TESTS_EXECTESTSUPPORT_H

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qvcore3/qvcore3.h>

#include "ChildProcess.h"

#include <ostream>
#include <string>

namespace exectest {

// What an operation threw: the exception's type name, result code and message.
struct Thrown {
    std::string type;
    qv::Result code = 0;
    std::string message;

    // "Type: message", for checks that pin the type and the text.
    std::string what() const { return type + ": " + message; }
    bool operator==(const Thrown& other) const
    {
        return type == other.type && code == other.code && message == other.message;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Thrown& thrown)
{
    return out << thrown.type << " 0x" << std::hex << static_cast<uint32_t>(thrown.code) << std::dec << " \""
               << thrown.message << '"';
}

template <class Operation>
Thrown thrownBy(Operation&& operation)
{
    Thrown thrown;
    try {
        operation();
        thrown.type = "nothing";
    } catch (const qv::IllegalStateException& e) {
        thrown = {"IllegalStateException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::io::IoException& e) {
        thrown = {"IoException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::OutOfMemoryException& e) {
        thrown = {"OutOfMemoryException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::ResultException& e) {
        thrown = {"ResultException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::Exception& e) {
        thrown = {"Exception", e.getResult(), e.getDescription().toUtf8()};
    }
    return thrown;
}

inline qv::Result code(uint32_t value)
{
    return static_cast<qv::Result>(value);
}

using qvtest::childProgram;
using qvtest::countChildren;
using qvtest::countOpenDescriptors;
using qvtest::uniqueName;
using qvtest::utf16;

// A unique name for a named semaphore or shared memory region, removed with
// the given platform call at the end of the test, whatever happened.
class NameGuard {
public:
    typedef QVRESULT (*Unlink)(const char*);
    NameGuard(const char* stem, Unlink unlink) : name(uniqueName(stem)), m_unlink(unlink) {}
    ~NameGuard() { m_unlink(name.c_str()); }
    const char* c_str() const { return name.c_str(); }

    const std::string name;

private:
    Unlink m_unlink;
};

} // namespace exectest

#endif
