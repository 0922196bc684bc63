#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zvgentl::tool {

/// The largest description that is read, packed or unpacked.
constexpr std::size_t largest_description = std::size_t{64} << 20U;

/// A description that lies in the registers of the port itself: "Local:name;address;length".
struct PortUrl {
    std::string file_name;
    std::uint64_t address{0};
    std::size_t length{0};
};

/// Throws std::runtime_error, naming what is wrong with it, for every other text.
PortUrl parse_port_url(const std::string& url);

} // namespace zvgentl::tool
