#ifndef QVCL3_TESTS_LOCALESCOPE_H
#define QVCL3_TESTS_LOCALESCOPE_H

#include <clocale>
#include <string>

// Switches the process locale for one scope and puts the old one back.
class LocaleScope {
public:
    explicit LocaleScope(const char* name) : m_old(std::setlocale(LC_ALL, nullptr))
    {
        m_ok = std::setlocale(LC_ALL, name) != nullptr;
    }
    ~LocaleScope() { std::setlocale(LC_ALL, m_old.c_str()); }
    bool ok() const { return m_ok; }

private:
    std::string m_old;
    bool m_ok;
};

#endif
