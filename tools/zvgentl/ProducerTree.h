#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zvgentl::tool {

/// What a producer offers, read out completely. A `problem` says why the rest of an entry could not be read.
struct DeviceEntry {
    std::string id;
    std::string vendor;
    std::string model;
    std::string display_name;
    std::string user_defined_name;
    std::string serial_number;
    std::string version;
    std::string transport;
    std::string access;
    std::optional<std::uint64_t> timestamp_frequency;
    std::vector<std::string> streams; // filled only on request, because the device must be opened for it
    std::string problem;
};

struct InterfaceEntry {
    std::string id;
    std::string display_name;
    std::string transport;
    std::vector<DeviceEntry> devices;
    std::string problem;
};

struct ProducerEntry {
    std::string file;
    std::string display_name;
    std::string vendor;
    std::string model;
    std::string version;
    std::string gentl_version;
    std::string transport;
    std::vector<InterfaceEntry> interfaces;
    std::string problem;
    std::string report{}; // what the producer's libraries have to say: lines without an end of the last one
};

enum class Streams { left_out, listed };

/// Loads the producer and reads its tree. Does not throw for what a producer does: see `problem`.
ProducerEntry read_producer(const std::filesystem::path& file, Streams streams);

std::string to_text(const ProducerEntry& producer);

/// The report of a producer for the error output; empty when it has none.
std::string report_text(const ProducerEntry& producer);

} // namespace zvgentl::tool
