#ifndef QV_TEXT_CHARSET_CODECMANAGER_H
#define QV_TEXT_CHARSET_CODECMANAGER_H

#include <qv/collections/Str1HashMap.h>
#include <qv/core/Class.h>
#include <qv/core/ComObject.h>
#include <qv/core/Export.h>
#include <qv/core/Reference.h>
#include <qv/core/TextSpelling.h>
#include <qv/util/Singleton.h>

namespace qv {
namespace text {
namespace charset {

// The encoder and decoder classes registered for one encoding name.
class QV_EXPORT CodecClasses : public ComObject {
public:
    CodecClasses(const Class* encoderClass, const Class* decoderClass) noexcept;
    ~CodecClasses() override;

    const Class* getEncoderClass() const noexcept { return m_encoder.get(); }
    const Class* getDecoderClass() const noexcept { return m_decoder.get(); }

private:
    // Referenced, so the classes outlive a class registry torn down first.
    Reference<const Class> m_encoder;
    Reference<const Class> m_decoder;
};

// The process-wide registry of converters by encoding name. Names are
// upper-cased, so lookups ignore case. Library start-up fills it from the
// built-in table; registration is not locked and belongs to start-up, while
// lookups only read.
class QV_EXPORT CodecManager {
public:
    // Created on first use under g_pGlobalLock.
    static CodecManager* getInstance();
    // Library shut-down.
    static void freeInstance();
    static bool hasInstance() noexcept;

    // The first registration of a name wins; later ones are ignored. An
    // unregistered class name throws ClassNotFoundException, a null argument
    // ResultException(0x80070057).
    void registerCodec(const char16_t* name, const char16_t* encoderClassName, const char16_t* decoderClassName);
    template <class T, IfOtherNameText<T> = 0>
    void registerCodec(const T* name, const T* encoderClassName, const T* decoderClassName)
    {
        const Utf16Name wideName(name), wideEncoder(encoderClassName), wideDecoder(decoderClassName);
        registerCodec(wideName.get(), wideEncoder.get(), wideDecoder.get());
    }

    // A new converter at reference count 0, owned by the caller (delete it,
    // or hold it in a Reference), or null for a name nobody knows (a null
    // name too). Names the registry lacks are looked up among the code pages converted
    // through iconv ("CP1250", "WINDOWS-1250", "EUC-JP", ...).
    // Names that are neither are sought as converter components registered
    // as "Velmara.CharCodec." + name (see qvcom/ConverterComponent.h).
    Object* getEncoder(const char16_t* name) const;
    Object* getDecoder(const char16_t* name) const;
    template <class T, IfOtherNameText<T> = 0>
    Object* getEncoder(const T* name) const
    {
        return getEncoder(Utf16Name(name).get());
    }
    template <class T, IfOtherNameText<T> = 0>
    Object* getDecoder(const T* name) const
    {
        return getDecoder(Utf16Name(name).get());
    }

    // The registration itself, or null; code pages have none.
    Reference<CodecClasses> getCodecClasses(const char16_t* name) const;
    template <class T, IfOtherNameText<T> = 0>
    Reference<CodecClasses> getCodecClasses(const T* name) const
    {
        return getCodecClasses(Utf16Name(name).get());
    }
    int32_t getCodecCount() const noexcept { return m_codecs.getSize(); }

    CodecManager(const CodecManager&) = delete;
    CodecManager& operator=(const CodecManager&) = delete;

private:
    template <class T, sync::LockObject** Lock>
    friend class util::Singleton;

    CodecManager();
    ~CodecManager();

    Object* create(const char16_t* name, bool encoder) const;

    collections::Str1HashMap m_codecs;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
