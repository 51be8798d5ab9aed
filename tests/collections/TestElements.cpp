#include "TestElements.h"

#include <qvcore3/qvcore3.h>

namespace qvtest {

QV_BEGIN_INTERFACE_MAP(FailingComparator)
QV_INTERFACE_ENTRY(FailingComparator, qv::collections::qvcom::IQVComparator)
QV_END_INTERFACE_MAP()

AllocationFault::AllocationFault(int32_t nth)
{
    QVFaultArmAllocation(nth);
}

AllocationFault::~AllocationFault()
{
    QVFaultDisarmAll();
}

bool AllocationFault::available()
{
    return QVFaultInjectionAvailable() != 0;
}

} // namespace qvtest
