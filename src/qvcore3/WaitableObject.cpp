#include "WaitableObject.h"

namespace qvcore3 {

WaitableObject::~WaitableObject()
{
    if (m_conditionReady) {
        pthread_cond_destroy(&m_condition);
    }
    if (m_mutexReady) {
        pthread_mutex_destroy(&m_mutex);
    }
}

QVRESULT WaitableObject::init() noexcept
{
    int error = pthread_mutex_init(&m_mutex, nullptr);
    m_mutexReady = error == 0;
    if (error == 0) {
        error = InitMonotonicCondition(&m_condition);
        m_conditionReady = error == 0;
    }
    return QVResultFromNative(error);
}

} // namespace qvcore3
