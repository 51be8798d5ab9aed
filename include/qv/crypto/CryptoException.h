#ifndef QV_CRYPTO_CRYPTOEXCEPTION_H
#define QV_CRYPTO_CRYPTOEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace crypto {

// Root of the failures of the message digests and the cipher, so that one
// handler can take them all. Every one reports 0x80004005 at a component
// boundary, like the library's other exceptions without a code of their own.
QV_DECLARE_EXCEPTION(CryptoException, Exception)
// MessageDigest::getInstance was given a name it does not know; the message
// names it.
QV_DECLARE_EXCEPTION(NoSuchAlgorithmException, CryptoException)
// A key of a length the cipher does not take, or an operation that needs a
// key on a cipher that has none.
QV_DECLARE_EXCEPTION(InvalidKeyException, CryptoException)
// Input to ECB or CBC that does not end on a block boundary where it must.
QV_DECLARE_EXCEPTION(IllegalBlockSizeException, CryptoException)
// Decrypted data whose PKCS #5 padding is not well formed: usually a wrong
// key, a wrong IV or damaged data.
QV_DECLARE_EXCEPTION(BadPaddingException, CryptoException)

} // namespace crypto
} // namespace qv

#endif
