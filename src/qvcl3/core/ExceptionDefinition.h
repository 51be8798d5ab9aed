#ifndef QVCL3_CORE_EXCEPTIONDEFINITION_H
#define QVCL3_CORE_EXCEPTIONDEFINITION_H

#include <qv/core/Exception.h>

// Defines the members that QV_DECLARE_EXCEPTION declares.
#define QV_DEFINE_EXCEPTION(Name, Base)                                                                                \
    Name::Name() = default;                                                                                            \
    Name::Name(const ::qv::String& message) : Base(message) {}                                                         \
    Name::Name(const Name& other) = default;                                                                           \
    Name& Name::operator=(const Name& other) = default;                                                                \
    Name::~Name() = default;

#endif
