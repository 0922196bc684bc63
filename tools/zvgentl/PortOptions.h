#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "zvgentl/Assignments.h"

namespace zvgentl::tool {

/// The modules that have a port, and the camera itself.
enum class PortKind { system, iface, device, stream, buffer, remote };

/// Which port a command works on.
struct PortOptions {
    std::string cti;
    std::string interface_id; // empty: any
    std::string device;       // ID or serial number; empty: the first one found
    PortKind port{PortKind::remote};
};

/// Binds `--cti`, `--interface` and `--device`, which all commands that open a device share.
void add_selection_options(CLI::App& app, std::string& cti, std::string& interface_id, std::string& device);

/// Binds these and `--port`.
void add_port_options(CLI::App& app, PortOptions& options);

/// Binds `--set NAME=VALUE`, which may be repeated.
void add_set_option(CLI::App& app, Assignments& assignments);

} // namespace zvgentl::tool
