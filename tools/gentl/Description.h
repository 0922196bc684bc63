#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "gentl/Registers.h"

namespace zvgentl::tool {

/// The largest description that is read, packed or unpacked.
constexpr std::size_t largest_description = std::size_t{64} << 20U;

/// A description stored in the registers of the port itself: "Local:name;address;length".
struct PortUrl {
    std::string file_name;
    std::uint64_t address{0};
    std::size_t length{0};
};

/// Throws std::runtime_error for any other text, saying what is wrong with it.
PortUrl parse_port_url(const std::string& url);

/// A register description as stored in the device.
struct DescriptionFile {
    std::string name; // of the file, from the URL
    std::string data; // packed, if the name ends in .zip
};

/// Reads the first of a port's descriptions that is stored in its registers. Throws std::runtime_error when
/// there is none, or what the port throws.
DescriptionFile read_description(const Registers& port, const std::vector<std::string>& urls);

/// The description's text: unpacked, and without the zeros that fill up registers. Throws std::runtime_error
/// for a damaged archive and for one that unpacks to more than `limit` bytes.
std::string unpack(const DescriptionFile& file, std::size_t limit = largest_description);

} // namespace zvgentl::tool
