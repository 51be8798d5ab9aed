#ifndef QVCL3_TESTS_I18N_I18NTESTSUPPORT_H
#define QVCL3_TESTS_I18N_I18NTESTSUPPORT_H

#include <qv/i18n/StringBundle.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include <stdlib.h>

namespace i18ntest {

// A fresh directory of bundle files, made the bundle search path for the
// test's lifetime.
class BundleDirectory {
public:
    BundleDirectory()
    {
        std::string pattern = "/tmp/qvcl3_i18n_XXXXXX";
        m_path = mkdtemp(&pattern[0]) ? pattern : "";
        qv::i18n::StringBundle::setSearchPath(qv::String(m_path.c_str(), -1, u"UTF-8"));
    }
    ~BundleDirectory()
    {
        qv::i18n::StringBundle::setSearchPath(qv::String());
        std::system(("rm -rf '" + m_path + "'").c_str());
    }
    BundleDirectory(const BundleDirectory&) = delete;
    BundleDirectory& operator=(const BundleDirectory&) = delete;

    const std::string& path() const { return m_path; }
    void write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(m_path + "/" + name, std::ios::binary) << bytes;
    }

private:
    std::string m_path;
};

inline std::string utf8(const qv::String& text)
{
    return text.toUtf8();
}

inline std::string text(const qv::Reference<const qv::i18n::StringBundle>& bundle, const char16_t* key)
{
    return bundle->getString(key).toUtf8();
}

} // namespace i18ntest

#endif
