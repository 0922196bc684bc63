#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "gentl/System.h"

namespace zvgentl::tool {

/// The producer to use: the only one, or the project's own among several. Throws std::runtime_error when
/// neither decides it.
std::filesystem::path select_producer(const std::vector<std::filesystem::path>& files);

/// The interface with this ID; the first one for an empty text. Throws std::runtime_error, listing what there
/// is, when there is none.
std::string select_interface(const System& system, const std::string& interface_id);

/// A device and its opened interface.
struct SelectedDevice {
    std::unique_ptr<Interface> iface;
    std::string interface_id;
    std::string id;
    std::string vendor;
    std::string model;
    std::string serial_number;
    std::uint64_t timestamp_frequency{0}; // ticks per second; 0 when not known
};

/// Finds the device with this ID or serial number, on this interface; an empty text stands for any. Throws
/// std::runtime_error, listing what there is, when none or more than one fits.
SelectedDevice select_device(const System& system, const std::string& interface_id,
                             const std::string& device);

} // namespace zvgentl::tool
