#include <qv/core/Exception.h>
#include <qv/core/Library.h>
#include <qv/lang/Str1.h>
#include <qv/lang/String.h>
#include <qv/text/charset/BTCASCII.h>
#include <qv/text/charset/BTCCodePage.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CTBASCII.h>
#include <qv/text/charset/CTBCodePage.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/text/charset/CodecManager.h>
#include <qvcore3/qvcore3.h>

#include "CodecTables.h"
#include "ComponentConverters.h"

namespace qv {
namespace text {
namespace charset {

namespace {

typedef util::Singleton<CodecManager, &g_pGlobalLock> Instance;

// Encoding names are short; a lookup builds its upper-case key on the stack
// unless the name is longer than this.
constexpr int32_t kShortName = 63;

template <class Use>
auto withUpperKey(const char16_t* name, const Use& use)
{
    const int32_t length = QVStrLenW(name);
    if (length <= kShortName) {
        StrBuf1<kShortName> key(name, length);
        key.toUpper();
        return use(static_cast<const Str1&>(key));
    }
    Str1 key(name, length);
    key.toUpper();
    return use(static_cast<const Str1&>(key));
}

CodecClasses* classesOf(const Reference<IQVUnknown>& value) noexcept
{
    return static_cast<CodecClasses*>(static_cast<ComObject*>(value.get()));
}

} // namespace

CodecClasses::CodecClasses(const Class* encoderClass, const Class* decoderClass) noexcept
    : m_encoder(encoderClass), m_decoder(decoderClass)
{}

CodecClasses::~CodecClasses() = default;

CodecManager::CodecManager() : m_codecs(101, 0.75f) {}

CodecManager::~CodecManager() = default;

CodecManager* CodecManager::getInstance()
{
    return Instance::getInstance();
}

void CodecManager::freeInstance()
{
    Instance::freeInstance();
}

bool CodecManager::hasInstance() noexcept
{
    return Instance::hasInstance();
}

void CodecManager::registerCodec(const char16_t* name, const char16_t* encoderClassName,
                                 const char16_t* decoderClassName)
{
    if (!name || !encoderClassName || !decoderClassName)
        throw ResultException(results::INVALIDARG);
    withUpperKey(name, [&](const Str1& key) {
        if (m_codecs.containsKey(key))
            return;
        Reference<CodecClasses> classes(
            new CodecClasses(Class::forName(encoderClassName), Class::forName(decoderClassName)));
        m_codecs.put(key, classes->GetUnknown());
    });
}

Reference<CodecClasses> CodecManager::getCodecClasses(const char16_t* name) const
{
    if (!name)
        return nullptr;
    return withUpperKey(name, [&](const Str1& key) { return Reference<CodecClasses>(classesOf(m_codecs.get(key))); });
}

Object* CodecManager::create(const char16_t* name, bool encoder) const
{
    if (!name)
        return nullptr;
    return withUpperKey(name, [&](const Str1& key) -> Object* {
        if (Reference<IQVUnknown> found = m_codecs.get(key)) {
            const CodecClasses* classes = classesOf(found);
            const Class* cls = encoder ? classes->getEncoderClass() : classes->getDecoderClass();
            return cls->createInstance();
        }
        // The code-page converters need their number, so they are made here
        // rather than registered by class.
        if (uint32_t codePage = detail::findCodePageByName(key.getData(), key.getLength())) {
            if (encoder)
                return new CTBCodePage(codePage);
            return new BTCCodePage(codePage);
        }
        return detail::createComponentConverter(key.getData(), key.getLength(), encoder);
    });
}

Object* CodecManager::getEncoder(const char16_t* name) const
{
    return create(name, true);
}

Object* CodecManager::getDecoder(const char16_t* name) const
{
    return create(name, false);
}

namespace {

template <class Converter>
Reference<Converter> converterFrom(Object* created, const char16_t* name)
{
    Reference<Object> made(created);
    if (!made)
        throw UnknownEncodingException(String(name));
    Converter* converter = dynamic_cast<Converter*>(made.get());
    if (!converter)
        throw CastFailedException(String(name));
    return Reference<Converter>(converter);
}

template <class Converter, class Ascii, class Make>
Reference<Converter> defaultConverter(const Make& make)
{
    char16_t name[40];
    if (QVGetDefaultCharEncoding(name, 40) >= 0 && name[0] != 0) {
        Reference<Object> made(make(name));
        if (Converter* converter = dynamic_cast<Converter*>(made.get()))
            return Reference<Converter>(converter);
    }
    return Reference<Converter>(new Ascii());
}

} // namespace

Reference<ByteToCharConverter> ByteToCharConverter::getConverter(const char16_t* name)
{
    if (!name)
        return getDefaultConverter();
    return converterFrom<ByteToCharConverter>(CodecManager::getInstance()->getDecoder(name), name);
}

Reference<ByteToCharConverter> ByteToCharConverter::getDefaultConverter()
{
    return defaultConverter<ByteToCharConverter, BTCASCII>(
        [](const char16_t* name) { return CodecManager::getInstance()->getDecoder(name); });
}

Reference<CharToByteConverter> CharToByteConverter::getConverter(const char16_t* name)
{
    if (!name)
        return getDefaultConverter();
    return converterFrom<CharToByteConverter>(CodecManager::getInstance()->getEncoder(name), name);
}

Reference<CharToByteConverter> CharToByteConverter::getDefaultConverter()
{
    return defaultConverter<CharToByteConverter, CTBASCII>(
        [](const char16_t* name) { return CodecManager::getInstance()->getEncoder(name); });
}

} // namespace charset
} // namespace text
} // namespace qv
