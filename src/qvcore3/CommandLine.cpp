#include "FaultInjection.h"

#include <cstddef>

namespace {

bool IsSeparator(char16_t unit) noexcept
{
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r' || unit == u'\v' || unit == u'\f';
}

// Walks the command line once; sink.begin() starts an argument, sink.put()
// adds a unit to it, sink.end() finishes it. The same walk counts and copies.
template <typename Sink>
void Walk(const char16_t* p, Sink& sink) noexcept
{
    for (;;) {
        while (IsSeparator(*p)) {
            ++p;
        }
        if (*p == 0) {
            return;
        }
        sink.begin();
        bool quoted = false;
        while (*p != 0 && (quoted || !IsSeparator(*p))) {
            if (*p == u'\\') {
                size_t backslashes = 0;
                while (p[backslashes] == u'\\') {
                    ++backslashes;
                }
                if (p[backslashes] != u'"') {
                    for (size_t i = 0; i < backslashes; ++i) {
                        sink.put(u'\\');
                    }
                    p += backslashes;
                    continue;
                }
                for (size_t i = 0; i < backslashes / 2; ++i) {
                    sink.put(u'\\');
                }
                p += backslashes;
                if (backslashes % 2 != 0) {
                    sink.put(u'"');
                    ++p;
                }
                // An even run leaves the quote to act as one below.
                continue;
            }
            if (*p == u'"') {
                if (quoted && p[1] == u'"') {
                    sink.put(u'"');
                    p += 2;
                } else {
                    quoted = !quoted;
                    ++p;
                }
                continue;
            }
            sink.put(*p++);
        }
        sink.end();
    }
}

struct Counter {
    size_t arguments = 0;
    size_t units = 0;
    void begin() noexcept { ++arguments; }
    void put(char16_t) noexcept { ++units; }
    void end() noexcept { ++units; }
};

struct Writer {
    char16_t** pointers;
    char16_t* out;
    size_t index = 0;
    void begin() noexcept { pointers[index++] = out; }
    void put(char16_t unit) noexcept { *out++ = unit; }
    void end() noexcept { *out++ = 0; }
};

} // namespace

// The array and its strings are one block from QVMemAlloc.
extern "C" QVRESULT QVCommandLineSplit(const char16_t* commandLine, char16_t*** argv, int32_t* argc) noexcept
{
    if (!argv || !argc) {
        return QV_E_POINTER;
    }
    *argv = nullptr;
    *argc = 0;
    QV_FAULT_POINT(QVCommandLineSplit);
    const char16_t empty[1] = {0};
    if (!commandLine) {
        commandLine = empty;
    }
    Counter counter;
    Walk(commandLine, counter);
    if (counter.arguments > 0x7FFFFFFFu) {
        return QV_E_INVALIDARG;
    }
    const size_t pointerBytes = (counter.arguments + 1) * sizeof(char16_t*);
    void* block = QVMemAlloc(pointerBytes + counter.units * sizeof(char16_t));
    if (!block) {
        return QV_E_OUTOFMEMORY;
    }
    Writer writer{static_cast<char16_t**>(block),
                  reinterpret_cast<char16_t*>(static_cast<char*>(block) + pointerBytes)};
    Walk(commandLine, writer);
    writer.pointers[counter.arguments] = nullptr;
    *argv = writer.pointers;
    *argc = static_cast<int32_t>(counter.arguments);
    return QV_S_OK;
}

extern "C" void QVCommandLineFree(char16_t** argv) noexcept
{
    QVMemFree(argv);
}
