// Threads, child processes and a named semaphore.
#include "Demo.h"

#include <cstdio>
#include <string>

namespace {

std::string readAll(qv::io::InputStream* stream)
{
    std::string text;
    char buffer[512];
    int32_t n = 0;
    while ((n = stream->read(buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<size_t>(n));
    return text;
}

} // namespace

void demoExec()
{
    section("A child process: write to its input, read its output");
    // tr from PATH, started with posix_spawn: the argument string is split by
    // the Windows command-line rules, never by a shell.
    qv::exec::Process tr(u"tr", u"a-z A-Z");
    const char text[] = "hello from qvcl3\n";
    tr.getOutputStream()->write(text, static_cast<int32_t>(sizeof text - 1));
    tr.getOutputStream()->close();
    std::printf("tr a-z A-Z says: %s", readAll(tr.getInputStream().get()).c_str());
    std::printf("exit code: %d\n", tr.join());

    qv::exec::Process failing(u"sh", u"-c \"echo to stderr >&2; exit 3\"", nullptr, nullptr,
                              qv::exec::Process::INHERIT_STDIN | qv::exec::Process::MERGE_STDERR);
    std::printf("sh (error merged into output) says: %s", readAll(failing.getInputStream().get()).c_str());
    std::printf("exit code: %d\n", failing.join());

    section("A thread, and a named semaphore as a cross-process lock");
    qv::ipc::Semaphore lock("qvcl3-demo-lock", 1);
    qv::Reference<qv::exec::Runnable> work = qv::makeReference<qv::exec::Runnable>([&lock] {
        lock.wait();
        std::printf("thread %u holds the semaphore (value now %d)\n",
                    static_cast<unsigned>(qv::exec::Thread::getCurrentID()), static_cast<int>(lock.getValue()));
        lock.signal();
    });
    qv::exec::Thread thread(work.get(), u"demo worker");
    thread.start();
    thread.join();
    qv::ipc::Semaphore::unlink("qvcl3-demo-lock");
    std::printf("joined; getID() is %u again\n", static_cast<unsigned>(thread.getID()));
}
