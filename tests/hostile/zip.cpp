#include <stdexcept>

#include "gentl/Description.h"
#include "hostile/input.h"

using namespace zvgentl::tool;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t limit = 100000;
    try {
        const std::string text = unpack({"camera.zip", zvhostile::text_of(data, size)}, limit);
        zvhostile::require(text.size() <= limit, "no more is unpacked than allowed");
    } catch (const std::runtime_error&) { // as for every archive that is damaged
        return 0;
    }
    return 0;
}
