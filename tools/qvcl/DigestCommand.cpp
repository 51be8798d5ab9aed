// md5sum, sha1sum, sha256sum: the output and the check mode of coreutils.
#include "Commands.h"

#include <qv/crypto/MessageDigest.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace qvcl {
namespace {

struct Algorithm {
    const char16_t* name;
    // The tag of the BSD form "MD5 (file) = ...".
    const char* tag;
};

const Algorithm kMd5{u"MD5", "MD5"};
const Algorithm kSha1{u"SHA-1", "SHA1"};
const Algorithm kSha256{u"SHA-256", "SHA256"};

// Throws qv::Exception when the input cannot be opened or read.
std::string hashFile(const Algorithm& algorithm, const std::string& name, std::vector<signed char>& buffer)
{
    Input input(name);
    qv::crypto::MessageDigest digest(algorithm.name);
    for (;;) {
        const int32_t n = input.read(buffer.data(), static_cast<int32_t>(buffer.size()));
        if (n == 0)
            break;
        digest.update(buffer.data(), n);
    }
    return narrow(digest.digestHex());
}

// A name with a backslash or a line feed is written escaped, and the line
// starts with a backslash to say so.
bool escapeName(const std::string& name, std::string& escaped)
{
    escaped.clear();
    bool changed = false;
    for (char c : name) {
        if (c == '\\') {
            escaped += "\\\\";
            changed = true;
        } else if (c == '\n') {
            escaped += "\\n";
            changed = true;
        } else {
            escaped += c;
        }
    }
    return changed;
}

bool unescapeName(const std::string& text, std::string& name)
{
    name.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            name += text[i];
            continue;
        }
        if (++i == text.size())
            return false;
        if (text[i] == '\\')
            name += '\\';
        else if (text[i] == 'n')
            name += '\n';
        else
            return false;
    }
    return true;
}

bool isHex(const std::string& text)
{
    for (char c : text) {
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return false;
    }
    return true;
}

struct CheckLine {
    std::string expected;
    std::string name;
};

bool parseCheckLine(const Algorithm& algorithm, size_t hexLength, std::string line, CheckLine& parsed)
{
    const bool escaped = !line.empty() && line[0] == '\\';
    if (escaped)
        line.erase(0, 1);
    std::string rawName;
    const std::string tag = std::string(algorithm.tag) + " (";
    if (line.compare(0, tag.size(), tag) == 0) {
        const size_t close = line.rfind(") = ");
        if (close == std::string::npos || close < tag.size())
            return false;
        rawName = line.substr(tag.size(), close - tag.size());
        parsed.expected = line.substr(close + 4);
    } else {
        if (line.size() < hexLength + 3 || line[hexLength] != ' ' ||
            (line[hexLength + 1] != ' ' && line[hexLength + 1] != '*'))
            return false;
        parsed.expected = line.substr(0, hexLength);
        rawName = line.substr(hexLength + 2);
    }
    if (parsed.expected.size() != hexLength || !isHex(parsed.expected) || rawName.empty())
        return false;
    if (escaped) {
        if (!unescapeName(rawName, parsed.name))
            return false;
    } else {
        parsed.name = rawName;
    }
    return true;
}

bool equalIgnoringCase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

std::string plural(size_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

struct CheckOptions {
    bool quiet = false;
    bool status = false;
    bool strict = false;
    bool ignoreMissing = false;
};

int checkList(const Arguments& arguments, const Algorithm& algorithm, const std::string& listName,
              const CheckOptions& options, std::vector<signed char>& buffer)
{
    const size_t hexLength = static_cast<size_t>(qv::crypto::MessageDigest(algorithm.name).getDigestLength()) * 2;
    std::vector<std::string> lines;
    try {
        Input list(listName);
        std::string text;
        for (;;) {
            const int32_t n = list.read(buffer.data(), static_cast<int32_t>(buffer.size()));
            if (n == 0)
                break;
            text.append(reinterpret_cast<const char*>(buffer.data()), static_cast<size_t>(n));
            size_t start = 0;
            for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
                lines.push_back(text.substr(start, end - start));
            text.erase(0, start);
        }
        if (!text.empty())
            lines.push_back(text);
    } catch (const qv::Exception& error) {
        report(arguments.command(), Input::displayNameOf(listName) + ": " + reason(error, listName));
        return EXIT_ERROR;
    }

    size_t good = 0, malformed = 0, unreadable = 0, mismatched = 0;
    for (const std::string& line : lines) {
        if (!line.empty() && line[0] == '#')
            continue;
        CheckLine parsed;
        if (!parseCheckLine(algorithm, hexLength, line, parsed)) {
            ++malformed;
            continue;
        }
        ++good;
        std::string actual;
        try {
            actual = hashFile(algorithm, parsed.name, buffer);
        } catch (const qv::Exception& error) {
            const std::string why = reason(error, parsed.name);
            if (options.ignoreMissing && why == "No such file or directory")
                continue;
            report(arguments.command(), parsed.name + ": " + why);
            ++unreadable;
            if (!options.status)
                std::printf("%s: FAILED open or read\n", parsed.name.c_str());
            continue;
        }
        if (!equalIgnoringCase(actual, parsed.expected)) {
            ++mismatched;
            if (!options.status)
                std::printf("%s: FAILED\n", parsed.name.c_str());
        } else if (!options.quiet && !options.status) {
            std::printf("%s: OK\n", parsed.name.c_str());
        }
    }
    std::fflush(stdout);
    if (good == 0) {
        report(arguments.command(), Input::displayNameOf(listName) + ": no properly formatted checksum lines found");
        return EXIT_ERROR;
    }
    if (!options.status) {
        if (malformed)
            report(arguments.command(),
                   "WARNING: " + plural(malformed, "line is improperly formatted", "lines are improperly formatted"));
        if (unreadable)
            report(arguments.command(),
                   "WARNING: " + plural(unreadable, "listed file could not be read", "listed files could not be read"));
        if (mismatched)
            report(arguments.command(), "WARNING: " + plural(mismatched, "computed checksum did NOT match",
                                                             "computed checksums did NOT match"));
    }
    return (unreadable || mismatched || (options.strict && malformed)) ? EXIT_ERROR : EXIT_OK;
}

int runDigest(const Algorithm& algorithm, Arguments& arguments, int argc, char** argv)
{
    qv::util::CmdLineParser& parser = arguments.parser();
    parser.addOption(u'c', u"check", false, u"read checksums from the FILEs and check them");
    parser.addOption(u'b', u"binary", false, u"mark the files as read in binary mode ('*')");
    parser.addOption(u't', u"text", false, u"mark the files as read in text mode (the default)");
    parser.addOption(0, u"tag", false, u"print BSD-style checksums");
    parser.addOption(0, u"quiet", false, u"with -c: do not print OK for each verified file");
    parser.addOption(0, u"status", false, u"with -c: print nothing; the exit status tells");
    parser.addOption(0, u"strict", false, u"with -c: fail on improperly formatted lines");
    parser.addOption(0, u"ignore-missing", false, u"with -c: skip missing files");
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    std::vector<std::string> files = arguments.positional();
    if (files.empty())
        files.push_back("-");
    std::vector<signed char> buffer(IO_BUFFER_SIZE);

    int status = EXIT_OK;
    if (arguments.isSet(u"check")) {
        CheckOptions options;
        options.quiet = arguments.isSet(u"quiet");
        options.status = arguments.isSet(u"status");
        options.strict = arguments.isSet(u"strict");
        options.ignoreMissing = arguments.isSet(u"ignore-missing");
        for (const std::string& list : files) {
            if (checkList(arguments, algorithm, list, options, buffer) != EXIT_OK)
                status = EXIT_ERROR;
        }
        return status;
    }
    const bool tag = arguments.isSet(u"tag");
    const char mode = arguments.isSet(u"binary") ? '*' : ' ';
    for (const std::string& file : files) {
        std::string hex;
        try {
            hex = hashFile(algorithm, file, buffer);
        } catch (const qv::Exception& error) {
            std::fflush(stdout);
            report(arguments.command(), file + ": " + reason(error, file));
            status = EXIT_ERROR;
            continue;
        }
        std::string escaped;
        const bool isEscaped = escapeName(file, escaped);
        if (tag)
            std::printf("%s%s (%s) = %s\n", isEscaped ? "\\" : "", algorithm.tag, escaped.c_str(), hex.c_str());
        else
            std::printf("%s%s %c%s\n", isEscaped ? "\\" : "", hex.c_str(), mode, escaped.c_str());
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        report(arguments.command(), std::string("write error: ") + std::strerror(errno));
        return EXIT_ERROR;
    }
    return status;
}

} // namespace

int runMd5sum(Arguments& arguments, int argc, char** argv)
{
    return runDigest(kMd5, arguments, argc, argv);
}

int runSha1sum(Arguments& arguments, int argc, char** argv)
{
    return runDigest(kSha1, arguments, argc, argv);
}

int runSha256sum(Arguments& arguments, int argc, char** argv)
{
    return runDigest(kSha256, arguments, argc, argv);
}

} // namespace qvcl
