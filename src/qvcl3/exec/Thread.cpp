#include <qv/core/Exception.h>
#include <qv/exec/Thread.h>
#include <qvcore3/qvcore3.h>

#include "exec/PlatformFailure.h"

#include <cinttypes>
#include <cstdio>
#include <exception>
#include <new>

namespace qv {
namespace exec {

namespace {

// One line on standard error for an exception that left run(): the thread
// is about to end and nobody else would see it. Built in fixed storage, as
// the exception may be the lack of memory.
void reportEscapedException(Result code, const String* description, const char* what) noexcept
{
    char text[640];
    int32_t length = 0;
    if (description) {
        // At most 3 bytes per unit, so 160 units always fit.
        const int32_t units = description->getLength() < 160 ? description->getLength() : 160;
        if (QVUnicodeToAnsi(description->getData(), units, text, 481, &length) < 0)
            length = 0;
        text[length] = 0;
        what = text;
    }
    char line[768];
    const int written = std::snprintf(line, sizeof line,
                                      "qv::exec::Thread %" PRIu32 ": an exception left run(): %s (0x%08" PRIX32 ")\n",
                                      QVThreadGetCurrentId(), what ? what : "", static_cast<uint32_t>(code));
    if (written > 0) {
        uint32_t done = 0;
        QVFileWrite(2, line, static_cast<uint32_t>(written) < sizeof line ? written : sizeof line - 1, &done);
    }
}

// Codes that stand for a failure, so that a failing run never joins as null.
Result failureCode(Result code) noexcept
{
    return code < 0 ? code : results::FAIL;
}

} // namespace

Thread::Thread(IRunnable* runnable) : m_runnable(runnable) {}

Thread::Thread(IRunnable* runnable, const String& name) : m_runnable(runnable), m_name(name) {}

Thread::Thread(const Thread& other)
    : Object(other), m_runnable(other.m_runnable), m_name(other.m_name), m_stackSize(other.m_stackSize)
{}

Thread::~Thread() noexcept(false)
{
    if (m_handle != QV_INVALID_HANDLE)
        qvcom::throwIfFailed(QVThreadDetach(m_handle));
}

Object* Thread::clone() const
{
    return new Thread(*this);
}

void Thread::checkNotStarted() const
{
    if (m_handle != QV_INVALID_HANDLE)
        throw IllegalStateException(QV_STR(u"thread already started"));
}

void Thread::checkStarted() const
{
    if (m_handle == QV_INVALID_HANDLE)
        throw IllegalStateException(QV_STR(u"thread not started"));
}

void Thread::start()
{
    checkNotStarted();
    IRunnable* runnable = m_runnable.get();
    // The new thread's own reference, given back by threadWrapper.
    if (runnable)
        runnable->AddRef();
    QVHANDLE handle = QV_INVALID_HANDLE;
    uint32_t id = 0;
    const Result result = QVThreadCreate(&Thread::threadWrapper, runnable, 0, m_stackSize, &handle, &id);
    if (result < 0) {
        if (runnable)
            runnable->Release();
        throwIfFailed(result, strLit(u"thread creation failed"));
    }
    m_handle = handle;
    m_id = id;
}

void* Thread::join()
{
    checkStarted();
    void* result = nullptr;
    throwIfFailed(QVThreadJoin(m_handle, &result), strLit(u"thread join failed"));
    m_handle = QV_INVALID_HANDLE;
    m_id = 0;
    return result;
}

uint32_t Thread::getCurrentID() noexcept
{
    return QVThreadGetCurrentId();
}

void Thread::sleep(uint32_t milliseconds) noexcept
{
    QVThreadSleep(milliseconds);
}

Result Thread::resultCode(void* joinResult) noexcept
{
    return static_cast<Result>(reinterpret_cast<intptr_t>(joinResult));
}

// Runs on the new thread. Nothing may leave it: an exception escaping a
// thread's entry would end the whole process.
void* Thread::threadWrapper(void* argument)
{
    IRunnable* runnable = static_cast<IRunnable*>(argument);
    if (!runnable)
        return nullptr;
    Result code = 0;
    try {
        runnable->run();
    } catch (const Exception& e) {
        code = failureCode(e.getResult());
        const String description = e.getDescription();
        reportEscapedException(code, &description, nullptr);
    } catch (const std::bad_alloc& e) {
        code = results::OUTOFMEMORY;
        reportEscapedException(code, nullptr, e.what());
    } catch (const std::exception& e) {
        code = results::FAIL;
        reportEscapedException(code, nullptr, e.what());
    } catch (...) {
        code = results::FAIL;
        reportEscapedException(code, nullptr, "unknown exception");
    }
    // Released here, not by the Thread object, which may be gone already
    // (detached) or be joined much later.
    try {
        runnable->Release();
    } catch (const Exception& e) {
        code = code < 0 ? code : failureCode(e.getResult());
        const String description = e.getDescription();
        reportEscapedException(code, &description, nullptr);
    } catch (...) {
        code = code < 0 ? code : results::FAIL;
        reportEscapedException(code, nullptr, "exception from the runnable's destructor");
    }
    return reinterpret_cast<void*>(static_cast<intptr_t>(code));
}

} // namespace exec
} // namespace qv
