#include "TestElements.h"

namespace qvtest {

QV_BEGIN_INTERFACE_MAP(FailingComparator)
QV_INTERFACE_ENTRY(FailingComparator, qv::collections::qvcom::IQVComparator)
QV_END_INTERFACE_MAP()

} // namespace qvtest
