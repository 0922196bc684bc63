#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zvgentl::tool {

class OptionList;

/// A feature and the value that it is to get, as the user wrote both.
struct Assignment {
    std::string name;
    std::string value;
};

using Assignments = std::vector<Assignment>;

/// NAME=VALUE; the value may be empty and may hold more equal signs. Nothing for any other text.
std::optional<Assignment> parse_assignment(const std::string& text);

/// The words of `zvgentl set`: each NAME=VALUE, or else just two, a name and a value. Nothing for others.
std::optional<Assignments> parse_assignments(const std::vector<std::string>& words);

/// The modules that have a port, and the camera itself.
enum class PortKind { system, iface, device, stream, buffer, remote };

/// Which device a command works on.
struct DeviceOptions {
    std::string cti;
    std::string interface_id; // empty: any
    std::string device;       // ID, serial number or user-defined name; empty: the first one found
};

/// Which port a command works on.
struct PortOptions : DeviceOptions {
    PortKind port{PortKind::remote};
};

/// `--cti`, which every command that loads a producer has.
void describe_producer(OptionList& list, std::string& cti);
/// `--cti`, `--interface` and `--device`, which all commands that open a device share.
void describe_device(OptionList& list, DeviceOptions& options);
/// These and `--port`.
void describe_port(OptionList& list, PortOptions& options);
/// `--set NAME=VALUE`, which may be repeated.
void describe_settings(OptionList& list, Assignments& settings);

} // namespace zvgentl::tool
