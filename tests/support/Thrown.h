// What an operation throws, for tests that check a failure's code or text.
#ifndef QVTEST_SUPPORT_THROWN_H
#define QVTEST_SUPPORT_THROWN_H

#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <string>

namespace qvtest {

// The result code of the exception E the operation throws; 0 when it
// throws nothing, which no failing case expects. Another exception type
// passes out and fails the test.
template <class E = qv::Exception, class Operation>
qv::Result resultOf(Operation&& operation)
{
    try {
        operation();
    } catch (const E& e) {
        return e.getResult();
    }
    return 0;
}

// The description of what the operation throws as E; fails the test when it
// throws nothing.
template <class E, class Operation>
std::string messageOf(Operation&& operation)
{
    try {
        operation();
    } catch (const E& e) {
        return e.getDescription().toUtf8();
    }
    ADD_FAILURE() << "nothing was thrown";
    return std::string();
}

// The same, for an exception whose result code must also be the expected one.
template <class E, class Operation>
std::string messageOf(Operation&& operation, qv::Result expected)
{
    try {
        operation();
    } catch (const E& e) {
        EXPECT_EQ(e.getResult(), expected);
        return e.getDescription().toUtf8();
    }
    ADD_FAILURE() << "nothing was thrown";
    return std::string();
}

} // namespace qvtest

#endif
