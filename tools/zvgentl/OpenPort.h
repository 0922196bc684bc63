#pragma once

#include <memory>
#include <optional>
#include <string>

#include "genapi/NodeMap.h"
#include "gentl/Description.h"
#include "gentl/Port.h"
#include "gentl/Stream.h"
#include "zvgentl/PortOptions.h"
#include "zvgentl/Selection.h"

namespace zvgentl::tool {

/// A port, with everything open that it needs to be open, for as long as the object lives.
class OpenPort {
public:
    explicit OpenPort(const PortOptions& options);

    const Port& port() const noexcept { return *m_port; }
    const System& system() const noexcept { return m_loaded->system; }
    /// The modules that had to be opened; null for those that are not.
    const Interface* iface() const noexcept { return m_interface.get(); }
    const Device* device() const noexcept { return m_device ? &*m_device : nullptr; }
    const Stream* stream() const noexcept { return m_stream ? &*m_stream : nullptr; }
    /// "Device00 (remote)": which port was chosen.
    const std::string& title() const noexcept { return m_title; }
    DescriptionFile description() const { return read_description(*m_port, m_port->urls()); }

private:
    GenTL::PORT_HANDLE open(const PortOptions& options);
    GenTL::PORT_HANDLE open_device(const PortOptions& options);
    GenTL::PORT_HANDLE open_stream(PortKind kind);

    std::unique_ptr<LoadedSystem> m_loaded;
    std::unique_ptr<Interface> m_interface;
    std::optional<Device> m_device;
    std::optional<Stream> m_stream;
    std::optional<Port> m_port;
    std::string m_title;
};

/// The features of a port that is open for as long as the object lives.
class PortFeatures {
public:
    explicit PortFeatures(const PortOptions& options);

    const std::string& title() const noexcept { return m_port.title(); }
    const NodeMap& map() const noexcept { return m_map; }

private:
    OpenPort m_port;
    NodeMap m_map;
};

/// The node map of a device that is open already. The port must live as long as the result.
std::unique_ptr<NodeMap> make_node_map(const Port& port);

/// Sets the features in the order in which they were written, because one may allow the next.
void set_all(const Assignments& assignments, const NodeMap& map);

} // namespace zvgentl::tool
