#include <qv/crypto/CryptoException.h>

#include "core/ExceptionDefinition.h"

namespace qv {
namespace crypto {

QV_DEFINE_EXCEPTION(CryptoException, Exception)
QV_DEFINE_EXCEPTION(NoSuchAlgorithmException, CryptoException)
QV_DEFINE_EXCEPTION(InvalidKeyException, CryptoException)
QV_DEFINE_EXCEPTION(IllegalBlockSizeException, CryptoException)
QV_DEFINE_EXCEPTION(BadPaddingException, CryptoException)

} // namespace crypto
} // namespace qv
