#include <qv/core/Exception.h>
#include <qv/exec/Process.h>
#include <qvcore3/qvcore3.h>

#include "exec/PipeStreams.h"
#include "exec/PlatformFailure.h"

static_assert(qv::exec::Process::INHERIT_STDIN == QV_PROCESS_INHERIT_STDIN &&
                  qv::exec::Process::INHERIT_STDOUT == QV_PROCESS_INHERIT_STDOUT &&
                  qv::exec::Process::INHERIT_STDERR == QV_PROCESS_INHERIT_STDERR &&
                  qv::exec::Process::MERGE_STDERR == QV_PROCESS_MERGE_STDERR,
              "the flags reach the platform unchanged");

namespace qv {
namespace exec {

Process::Process(const char16_t* program, const char16_t* arguments, const char16_t* directory,
                 const char16_t* const* environment, unsigned flags)
{
    // The streams exist before the child does, so that nothing can fail
    // once it runs; each takes its descriptor afterwards.
    Reference<PipeOutputStream> input = makeReference<PipeOutputStream>(-1);
    Reference<PipeInputStream> output = makeReference<PipeInputStream>(-1);
    Reference<PipeInputStream> error = makeReference<PipeInputStream>(-1);
    STRUCT_QV_PROCESS_PIPES pipes{-1, -1, -1};
    QVHANDLE handle = QV_INVALID_HANDLE;
    throwIfFailed(QVProcessCreate(program, arguments, directory, environment, flags, &pipes, &handle));
    input->adopt(pipes.stdinWrite);
    output->adopt(pipes.stdoutRead);
    error->adopt(pipes.stderrRead);
    m_handle = handle;
    m_stdin = std::move(input);
    m_stdout = std::move(output);
    m_stderr = std::move(error);
}

Process::~Process() noexcept(false)
{
    // A close that fails has still given the descriptor back.
    for (io::InputStream* stream : {m_stdout.get(), m_stderr.get()}) {
        try {
            stream->close();
        } catch (const Exception&) {
        }
    }
    try {
        m_stdin->close();
    } catch (const Exception&) {
    }
    if (m_handle != QV_INVALID_HANDLE)
        qvcom::throwIfFailed(QVProcessDetach(m_handle));
}

void Process::checkJoinable() const
{
    if (m_handle == QV_INVALID_HANDLE)
        throw IllegalStateException(QV_STR(u"process already joined"));
}

void Process::finishJoin(int32_t exitCode) noexcept
{
    m_handle = QV_INVALID_HANDLE;
    m_exitCode = exitCode;
}

int32_t Process::join()
{
    checkJoinable();
    int32_t exitCode = 0;
    throwIfFailed(QVProcessJoin(m_handle, &exitCode), strLit(u"process join failed"));
    finishJoin(exitCode);
    return exitCode;
}

bool Process::tryJoin()
{
    checkJoinable();
    int32_t exitCode = 0;
    const Result result = QVProcessGetExitCode(m_handle, &exitCode);
    if (result == QV_S_FALSE)
        return false;
    throwIfFailed(result, strLit(u"process join failed"));
    // The status is collected already, so this join does not block.
    throwIfFailed(QVProcessJoin(m_handle, &exitCode), strLit(u"process join failed"));
    finishJoin(exitCode);
    return true;
}

int32_t Process::getExitCode() const
{
    if (m_handle != QV_INVALID_HANDLE)
        throw IllegalStateException(QV_STR(u"process has not been joined"));
    return m_exitCode;
}

uint32_t Process::getID() const
{
    throw ResultException(results::ILLEGAL_METHOD_CALL);
}

uint32_t Process::getCurrentID() noexcept
{
    return QVProcessGetCurrentId();
}

} // namespace exec
} // namespace qv
