#include <qv/exec/Runnable.h>

#include <utility>

namespace qv {
namespace exec {

QV_BEGIN_INTERFACE_MAP(Runnable)
QV_INTERFACE_ENTRY(Runnable, IRunnable)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

Runnable::Runnable(std::function<void()> body) : m_body(std::move(body)) {}

Runnable::~Runnable() = default;

void Runnable::run()
{
    if (m_body)
        m_body();
}

} // namespace exec
} // namespace qv
