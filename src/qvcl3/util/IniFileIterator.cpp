#include <qv/util/IniFileIterator.h>

#include <qv/util/IniFile.h>
#include <qv/util/IniFileException.h>

#include "util/IniFileLockHold.h"

namespace qv {
namespace util {

IniFileIteratorBase::IniFileIteratorBase(const String& setName) : m_setName(setName), m_position(0) {}

IniFileIteratorBase::~IniFileIteratorBase() = default;

String IniFileIteratorBase::getSetName() const
{
    return m_setName;
}

bool IniFileIteratorBase::hasNext() const
{
    return m_position < m_names.size();
}

String IniFileIteratorBase::next()
{
    if (m_position >= m_names.size())
        throw IniFileException(IniFileException::NO_MORE_ELEMENTS, String(u"no more elements"));
    return m_names[m_position++];
}

IniFileSetIterator::IniFileSetIterator(IniFile& file, const char16_t* setName)
    : IniFileIteratorBase(setName ? String(setName) : String())
{
    IniFileLockHold hold(file.m_lock);
    file.checkAndUpdate();
    m_names = m_setName.getLength() == 0 ? file.ListSets() : file.ListSubsets(m_setName);
}

IniFileSetIterator::~IniFileSetIterator() = default;

IniFileKeyIterator::IniFileKeyIterator(IniFile& file, const char16_t* setName)
    : IniFileIteratorBase(setName ? String(setName) : String())
{
    IniFileLockHold hold(file.m_lock);
    file.checkAndUpdate();
    m_names = file.ListKeys(m_setName);
}

IniFileKeyIterator::~IniFileKeyIterator() = default;

} // namespace util
} // namespace qv
