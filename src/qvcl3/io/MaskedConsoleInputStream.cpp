#include <qv/io/MaskedConsoleInputStream.h>

#include "io/FileSupport.h"
#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

namespace qv {
namespace io {

namespace {

// Echo off for the life of the object; the terminal's mode comes back
// however the read ends.
class EchoOff {
public:
    explicit EchoOff(int32_t handle)
    {
        const Result result = QVTerminalEchoOff(handle, &m_token);
        if (failed(result))
            detail::throwFileError(u"cannot turn off echo of terminal", detail::handleName(handle), result);
    }
    ~EchoOff() { QVTerminalRestore(m_token); }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    int32_t m_token = -1;
};

} // namespace

MaskedConsoleInputStream::MaskedConsoleInputStream() noexcept : m_handle(0) {}

MaskedConsoleInputStream::MaskedConsoleInputStream(int32_t handle) : m_handle(handle)
{
    if (handle < 0)
        throw ResultException(results::INVALIDARG);
}

MaskedConsoleInputStream::~MaskedConsoleInputStream() = default;

// A byte at a time: a read never takes anything past the line end, which
// belongs to whoever reads the terminal next.
int32_t MaskedConsoleInputStream::read(signed char* buffer, int32_t count)
{
    if (!detail::wantsBytes(buffer, count))
        return 0;
    EchoOff echoOff(m_handle);
    int32_t n = 0;
    while (n < count) {
        char c = 0;
        uint32_t done = 0;
        const Result result = QVFileRead(m_handle, &c, 1, &done);
        if (failed(result))
            detail::throwFileError(u"cannot read terminal", detail::handleName(m_handle), result);
        if (done == 0) {
            if (n == 0 && !m_inLine)
                return -1;
            break;
        }
        if (c == '\n') {
            m_inLine = false;
            return n;
        }
        buffer[n++] = static_cast<signed char>(c);
    }
    m_inLine = n == count;
    return n;
}

} // namespace io
} // namespace qv
