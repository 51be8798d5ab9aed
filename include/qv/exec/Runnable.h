#ifndef QV_EXEC_RUNNABLE_H
#define QV_EXEC_RUNNABLE_H

#include <qv/core/Object.h>
#include <qv/exec/IRunnable.h>

#include <functional>

namespace qv {
namespace exec {

// A ready-made IRunnable: runs the function it was given, or is subclassed
// with run() overridden. Create it with makeReference<Runnable>(...).
class QV_EXPORT Runnable : public Object, public IRunnable {
    QV_DECLARE_INTERFACE_MAP()

public:
    Runnable() = default;
    explicit Runnable(std::function<void()> body);
    ~Runnable() override;

    // Calls the function; does nothing when there is none.
    void run() override;

private:
    std::function<void()> m_body;
};

} // namespace exec
} // namespace qv

#endif
