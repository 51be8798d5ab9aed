#include "TextBridge.h"

namespace qv {
namespace math {
namespace detail {

String toQvString(const std::string& ascii)
{
    std::u16string wide(ascii.begin(), ascii.end());
    return String(wide.data(), static_cast<int32_t>(wide.size()));
}

TextView viewOf(const String& text) noexcept
{
    const int32_t length = text.getLength();
    return TextView{text.getData(), length > 0 ? static_cast<size_t>(length) : 0};
}

} // namespace detail
} // namespace math
} // namespace qv
