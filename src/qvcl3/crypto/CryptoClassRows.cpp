#include "core/ClassTable.h"

#include <qv/crypto/Blowfish.h>
#include <qv/crypto/BlowfishCipher.h>
#include <qv/crypto/CipherInputStream.h>
#include <qv/crypto/CipherOutputStream.h>
#include <qv/crypto/CryptoException.h>
#include <qv/crypto/DigestInputStream.h>
#include <qv/crypto/DigestOutputStream.h>
#include <qv/crypto/MessageDigest.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_cryptoClassRows[] = {
    QV_CLASS_ROW(crypto::BadPaddingException),
    QV_CLASS_ROW(crypto::Blowfish),
    QV_CLASS_ROW_NO_CREATOR(crypto::BlowfishCipher),
    QV_CLASS_ROW_NO_CREATOR(crypto::CipherInputStream),
    QV_CLASS_ROW_NO_CREATOR(crypto::CipherOutputStream),
    QV_CLASS_ROW(crypto::CryptoException),
    QV_CLASS_ROW_NO_CREATOR(crypto::DigestInputStream),
    QV_CLASS_ROW_NO_CREATOR(crypto::DigestOutputStream),
    QV_CLASS_ROW(crypto::IllegalBlockSizeException),
    QV_CLASS_ROW(crypto::InvalidKeyException),
    QV_CLASS_ROW_NO_CREATOR(crypto::MessageDigest),
    QV_CLASS_ROW(crypto::NoSuchAlgorithmException),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
