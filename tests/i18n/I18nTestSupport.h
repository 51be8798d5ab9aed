#ifndef QVCL3_TESTS_I18N_I18NTESTSUPPORT_H
#define QVCL3_TESTS_I18N_I18NTESTSUPPORT_H

#include <qv/i18n/StringBundle.h>

#include "ChildProcess.h"

#include <string>

namespace i18ntest {

// A fresh directory of bundle files, made the bundle search path for the
// test's lifetime.
class BundleDirectory : public qvtest::TempDir {
public:
    BundleDirectory() : qvtest::TempDir("qvcl3_i18n")
    {
        qv::i18n::StringBundle::setSearchPath(qv::String(path().c_str(), -1, u"UTF-8"));
    }
    ~BundleDirectory() { qv::i18n::StringBundle::setSearchPath(qv::String()); }
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
