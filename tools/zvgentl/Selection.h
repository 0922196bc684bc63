#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "gentl/System.h"
#include "zvgentl/PortOptions.h"

namespace zvgentl::tool {

/// The producer to use: the only one, or the project's own among several. Throws std::runtime_error when
/// neither decides it.
std::filesystem::path select_producer(const std::vector<std::filesystem::path>& files);

/// A producer that is loaded, and its system, for as long as the object lives.
struct LoadedSystem {
    /// Throws when the producer cannot be used, also std::runtime_error with its report when it has one: what
    /// it offers is not what was configured.
    explicit LoadedSystem(const std::filesystem::path& file);

    Producer producer;
    System system;
};

/// The producer that has the interface and the device of the options, among those that the options or the
/// environment name. Throws std::runtime_error when none has them, and when several have.
std::unique_ptr<LoadedSystem> load_system(const DeviceOptions& options);

/// The interface with this ID; the first one for an empty text. Capital and small letters are the same where
/// that leaves one. Throws std::runtime_error, listing what there is, when there is none.
std::string select_interface(const System& system, const std::string& interface_id);

/// A device and its opened interface.
struct SelectedDevice {
    std::unique_ptr<Interface> iface;
    std::string interface_id;
    std::string id;
    std::string vendor;
    std::string model;
    std::string serial_number;
    std::string user_defined_name;
    std::uint64_t timestamp_frequency{0}; // ticks per second; 0 when not known
};

/// Finds the device with this ID, serial number or user-defined name, on this interface; an empty text stands
/// for any. Capital and small letters are the same where that leaves one. Throws std::runtime_error, listing
/// what there is, when none or more than one fits.
SelectedDevice select_device(const System& system, const std::string& interface_id,
                             const std::string& device);

} // namespace zvgentl::tool
