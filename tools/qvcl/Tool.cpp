#include "Tool.h"

#include <qv/io/IoException.h>
#include <qv/util/CmdLineException.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace qvcl {

std::string narrow(const qv::String& text)
{
    return text.toUtf8();
}

qv::String wide(const std::string& text)
{
    return qv::String(text.data(), static_cast<int32_t>(text.size()), u"UTF-8");
}

void report(const std::string& command, const std::string& text)
{
    // What was printed before the failure comes first on a shared terminal.
    std::fflush(stdout);
    std::fprintf(stderr, "%s: %s\n", command.c_str(), text.c_str());
}

std::string reason(const qv::Exception& error, const std::string& name)
{
    const std::string message = narrow(error.getDescription());
    const std::string marker = name + ": ";
    const size_t at = message.rfind(marker);
    if (!name.empty() && at != std::string::npos && at + marker.size() < message.size())
        return message.substr(at + marker.size());
    // A stream made from a handle names the handle; the system's text
    // follows the last colon.
    const size_t last = message.rfind(": ");
    return last == std::string::npos ? message : message.substr(last + 2);
}

bool standardErrorIsTerminal()
{
    return isatty(2) == 1;
}

Arguments::Arguments(std::string command, std::string synopsis, std::string description)
    : m_command(std::move(command)), m_synopsis(std::move(synopsis)), m_description(std::move(description))
{
    m_parser.setWindowsStyle(false);
    m_parser.addOption(0, u"help", false, u"print this help and exit");
}

bool Arguments::parse(int argc, char** argv)
{
    std::vector<qv::String> words;
    words.push_back(wide(m_command));
    try {
        for (int i = 0; i < argc; ++i)
            words.push_back(wide(argv[i]));
    } catch (const qv::Exception&) {
        throw UsageError{"arguments must be UTF-8 text"};
    }
    std::vector<const char16_t*> pointers;
    for (const qv::String& word : words)
        pointers.push_back(word.getData());
    try {
        m_parser.parse(static_cast<int>(pointers.size()), pointers.data());
    } catch (const qv::util::CmdLineException& error) {
        throw UsageError{narrow(error.getDescription())};
    }
    if (!m_parser.isSet(u"help"))
        return true;
    const std::string usage = narrow(m_parser.getUsage());
    const size_t options = usage.find("Options:");
    std::printf("Usage: %s\n%s\n\n%s", m_synopsis.c_str(), m_description.c_str(),
                options == std::string::npos ? "" : usage.substr(options).c_str());
    return false;
}

std::string Arguments::value(const char16_t* name, const std::string& fallback) const
{
    return m_parser.isSet(name) ? narrow(m_parser.getValue(name)) : fallback;
}

std::vector<std::string> Arguments::values(const char16_t* name) const
{
    std::vector<std::string> result;
    for (const qv::String& value : m_parser.getValues(name))
        result.push_back(narrow(value));
    return result;
}

std::vector<std::string> Arguments::positional() const
{
    std::vector<std::string> result;
    for (int32_t i = 0; i < m_parser.getArgumentCount(); ++i)
        result.push_back(narrow(m_parser.getArgument(i)));
    return result;
}

namespace {

// File names are opened here rather than through qv::util::FilePath, which
// reads a backslash as a separator: on Linux "a\\b" is one file name.
int32_t openFile(const std::string& name, int flags)
{
    const int handle = ::open(name.c_str(), flags | O_CLOEXEC, 0666);
    if (handle < 0)
        throw qv::io::IoException(wide("cannot open file: " + name + ": " + std::strerror(errno)));
    return handle;
}

// Below this the bar would only flicker.
constexpr int64_t PROGRESS_THRESHOLD = int64_t(64) << 20;
constexpr int PROGRESS_WIDTH = 40;

} // namespace

Input::Input(const std::string& name) : m_name(name)
{
    if (name == "-") {
        m_stream = new qv::io::FileInputStream(0, false);
        return;
    }
    std::error_code ignored;
    if (fs::is_directory(name, ignored))
        throw qv::io::IoException(wide("cannot open file: " + name + ": Is a directory"));
    m_stream = new qv::io::FileInputStream(openFile(name, O_RDONLY), true);
    if (fs::is_regular_file(name, ignored)) {
        m_size = m_stream->getSize();
        m_progress = m_size > PROGRESS_THRESHOLD && standardErrorIsTerminal();
    }
}

int32_t Input::read(signed char* buffer, int32_t capacity)
{
    int32_t filled = 0;
    while (filled < capacity) {
        const int32_t n = m_stream->read(buffer + filled, capacity - filled);
        if (n <= 0)
            break;
        filled += n;
    }
    m_position += filled;
    if (m_progress)
        showProgress();
    return filled;
}

void Input::showProgress()
{
    const int permille = m_position >= m_size ? 1000 : static_cast<int>(m_position * 1000 / m_size);
    if (permille / 10 == m_shownPermille / 10)
        return;
    m_shownPermille = permille;
    if (permille >= 1000) {
        // Erase the bar: what follows on the terminal starts on a clean line.
        std::fprintf(stderr, "\r%*s\r", PROGRESS_WIDTH + 8 + static_cast<int>(m_name.size()), "");
        m_progress = false;
        return;
    }
    const int filled = permille * PROGRESS_WIDTH / 1000;
    std::fprintf(stderr, "\r%s [%s%s] %3d%%", m_name.c_str(), std::string(filled, '#').c_str(),
                 std::string(PROGRESS_WIDTH - filled, ' ').c_str(), permille / 10);
    std::fflush(stderr);
}

Output::Output(const std::string& name) : m_name(name)
{
    if (name.empty()) {
        m_stream = new qv::io::FileOutputStream(1, false);
        return;
    }
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        m_stream = new qv::io::FileOutputStream(openFile(name, O_WRONLY), true);
        return;
    }
    const fs::path target(name);
    const fs::path directory = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::string pattern = (directory / ("." + target.filename().string() + ".XXXXXX")).string();
    const int handle = mkstemp(pattern.data());
    if (handle < 0)
        throw qv::io::IoException(wide("cannot create file: " + name + ": " + std::strerror(errno)));
    m_temporary = pattern;
    // mkstemp makes the file private; the result gets the permissions a new
    // file would get, or those of the file it replaces.
    fs::perms permissions;
    if (fs::exists(status)) {
        permissions = status.permissions();
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        permissions = static_cast<fs::perms>(0666 & ~mask);
    }
    fs::permissions(m_temporary, permissions, error);
    m_stream = new qv::io::FileOutputStream(handle, true);
}

Output::~Output()
{
    if (!m_committed)
        discard();
}

void Output::write(const signed char* bytes, int32_t count)
{
    flush();
    m_stream->write(bytes, count);
}

void Output::put(const char* bytes, size_t count)
{
    if (m_buffer.size() + count > static_cast<size_t>(IO_BUFFER_SIZE))
        flush();
    if (count >= static_cast<size_t>(IO_BUFFER_SIZE)) {
        m_stream->write(reinterpret_cast<const signed char*>(bytes), static_cast<int32_t>(count));
        return;
    }
    m_buffer.insert(m_buffer.end(), bytes, bytes + count);
}

void Output::flush()
{
    if (m_buffer.empty())
        return;
    // Emptied either way: after a failed write the bytes must not be tried
    // again. The capacity stays, so no flush allocates.
    try {
        m_stream->write(reinterpret_cast<const signed char*>(m_buffer.data()), static_cast<int32_t>(m_buffer.size()));
    } catch (...) {
        m_buffer.clear();
        throw;
    }
    m_buffer.clear();
}

void Output::commit()
{
    flush();
    m_stream->close();
    if (!m_temporary.empty()) {
        std::error_code error;
        fs::rename(m_temporary, m_name, error);
        if (error)
            throw qv::io::IoException(wide("cannot rename file: " + m_name + ": " + error.message()));
    }
    m_committed = true;
}

void Output::discard() noexcept
{
    try {
        m_stream->close();
    } catch (const qv::Exception&) {
        // The file goes anyway.
    }
    if (!m_temporary.empty()) {
        std::error_code ignored;
        fs::remove(m_temporary, ignored);
    }
}

} // namespace qvcl
