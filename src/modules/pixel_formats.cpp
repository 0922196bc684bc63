#include "modules/pixel_formats.h"

#include <algorithm>
#include <iterator>

namespace zvgentl {

static_assert(std::size(pixel_formats) == 48, "one row per format that both standards name");

std::optional<uint32_t> pfnc_of(uint32_t coaxpress) noexcept
{
    const auto* const row = std::lower_bound(
        std::begin(pixel_formats), std::end(pixel_formats), coaxpress,
        [](const PixelFormatRow& candidate, uint32_t code) { return candidate.coaxpress < code; });
    if (row == std::end(pixel_formats) || row->coaxpress != coaxpress)
        return std::nullopt;
    return row->pfnc;
}

} // namespace zvgentl
