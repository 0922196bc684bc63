#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include <CLI/CLI.hpp>

#include "pictures/PictureWriter.h"
#include "zvgentl/Assignments.h"

namespace zvgentl::tool {

/// How frames reach the consumer's buffers: filled in place, or copied from a ring of the grabber library.
enum class StreamMode { queued, cyclic };

const char* mode_name(StreamMode mode) noexcept;

/// The options of `zvgentl grab` with their defaults.
struct GrabOptions {
    std::string cti;
    std::string interface_id; // empty: any
    std::string device;       // ID or serial number; empty: the first one found
    Assignments settings;     // features of the camera that are set first
    std::uint64_t frames{10}; // 0: until interrupted
    std::size_t buffers{8};
    StreamMode mode{StreamMode::queued};
    std::uint64_t timeout_ms{5000};
    std::string output; // folder for pictures; empty: none are saved
    FileFormat format{FileFormat::png};
    bool json{false};
    bool verify{true};
};

/// Binds the command line to options, which must live as long as app.
void add_grab_options(CLI::App& app, GrabOptions& options);

} // namespace zvgentl::tool
