#include <stdexcept>

#include "gentl/Description.h"
#include "hostile/input.h"

using namespace zvgentl::tool;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        const PortUrl url = parse_port_url(zvhostile::text_of(data, size));
        zvhostile::require(url.length > 0 && url.length <= largest_description,
                           "a description has a bounded length");
        zvhostile::require(url.address + (url.length - 1) >= url.address,
                           "a description ends before the last address");
    } catch (const std::runtime_error& refusal) {
        zvhostile::require(std::string(refusal.what()).size() < 1000, "a refusal is short");
    }
    return 0;
}
