// Pieces every qvcl subcommand shares: the command line, messages and exit
// status, input files with their progress bar, and output that appears whole
// or not at all.
#ifndef QVCL_TOOL_H
#define QVCL_TOOL_H

#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/io/FileInputStream.h>
#include <qv/io/FileOutputStream.h>
#include <qv/lang/String.h>
#include <qv/util/CmdLineParser.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qvcl {

constexpr int EXIT_OK = 0;
constexpr int EXIT_ERROR = 1;
constexpr int EXIT_USAGE = 2;

// A refused command line; main prints it with a pointer to --help.
struct UsageError {
    std::string message;
};

std::string narrow(const qv::String& text);
qv::String wide(const std::string& text);

// "qvcl <command>: <text>" on standard error.
void report(const std::string& command, const std::string& text);

// What went wrong with a file, without the operation and the name the
// library puts in front ("No such file or directory").
std::string reason(const qv::Exception& error, const std::string& name);

// One subcommand's command line: the options are declared on parser(), then
// parse() reads them, answers --help and throws UsageError for anything
// refused.
class Arguments {
public:
    Arguments(std::string command, std::string synopsis, std::string description);
    qv::util::CmdLineParser& parser() { return m_parser; }
    // False when --help was given (the help is printed already).
    bool parse(int argc, char** argv);
    bool isSet(const char16_t* name) const { return m_parser.isSet(name); }
    std::string value(const char16_t* name, const std::string& fallback = std::string()) const;
    std::vector<std::string> values(const char16_t* name) const;
    std::vector<std::string> positional() const;
    const std::string& command() const { return m_command; }

private:
    std::string m_command;
    std::string m_synopsis;
    std::string m_description;
    qv::util::CmdLineParser m_parser;
};

// An input: a named file or, for "-", standard input. Directories are
// refused at open, so the message is the file's and not a read error.
class Input {
public:
    // Throws qv::Exception (IoException) with the library's message.
    explicit Input(const std::string& name);
    // Fills buffer as far as the input goes; 0 at the end.
    int32_t read(signed char* buffer, int32_t capacity);
    const std::string& name() const { return m_name; }
    // How the input is named in messages.
    std::string displayName() const { return displayNameOf(m_name); }
    static std::string displayNameOf(const std::string& name) { return name == "-" ? "standard input" : name; }
    int64_t position() const { return m_position; }

private:
    void showProgress();

    std::string m_name;
    qv::Reference<qv::io::FileInputStream> m_stream;
    int64_t m_position = 0;
    int64_t m_size = 0;
    int m_shownPermille = -1;
    bool m_progress = false;
};

// Standard output, or a file written under a temporary name beside it and
// renamed over it by commit(): a failure never leaves a partial file. A
// target that is no regular file (/dev/null, /dev/full, a pipe) is written
// directly.
class Output {
public:
    // Standard output for an empty name. Throws qv::Exception naming the
    // file when it cannot be created.
    explicit Output(const std::string& name);
    ~Output();
    void write(const signed char* bytes, int32_t count);
    // Buffers small writes; large ones go straight through.
    void put(const char* bytes, size_t count);
    void flush();
    void commit();
    const std::string& name() const { return m_name; }

private:
    void discard() noexcept;

    std::string m_name;
    std::string m_temporary;
    qv::Reference<qv::io::FileOutputStream> m_stream;
    std::vector<char> m_buffer;
    bool m_committed = false;
};

bool standardErrorIsTerminal();

// Sized for throughput: the digests and converters run at GB/s, so the
// system call per buffer must not show.
constexpr int32_t IO_BUFFER_SIZE = 1 << 20;

} // namespace qvcl

#endif
