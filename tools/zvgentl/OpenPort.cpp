#include "zvgentl/OpenPort.h"

#include <algorithm>
#include <stdexcept>

namespace zvgentl::tool {

using namespace GenTL;

namespace {

constexpr std::size_t least_buffer = 4096; // for a stream that does not say how large its frames are

} // namespace

OpenPort::OpenPort(const PortOptions& options) : m_loaded(load_system(options))
{
    m_port.emplace(m_loaded->producer, open(options));
}

PORT_HANDLE OpenPort::open(const PortOptions& options)
{
    if (options.port == PortKind::system) {
        m_title = "system";
        return m_loaded->system.handle();
    }
    if (options.port != PortKind::iface || !options.device.empty())
        return open_device(options);
    m_title = select_interface(m_loaded->system, options.interface_id);
    m_interface = std::make_unique<Interface>(m_loaded->system, m_title);
    m_title += " (interface)";
    return m_interface->handle();
}

PORT_HANDLE OpenPort::open_device(const PortOptions& options)
{
    SelectedDevice selected = select_device(m_loaded->system, options.interface_id, options.device);
    m_interface = std::move(selected.iface);
    if (options.port == PortKind::iface) {
        m_title = selected.interface_id + " (interface)";
        return m_interface->handle();
    }
    m_device.emplace(*m_interface, selected.id);
    m_title = selected.id + (options.port == PortKind::remote ? " (remote)" : " (device)");
    if (options.port == PortKind::remote)
        return m_device->remote_port();
    return options.port == PortKind::device ? m_device->handle() : open_stream(options.port);
}

PORT_HANDLE OpenPort::open_stream(PortKind kind)
{
    const auto ids = m_device->stream_ids();
    if (ids.empty())
        throw std::runtime_error("the device has no data stream");
    m_stream.emplace(*m_device, ids.front());
    m_title = ids.front() + (kind == PortKind::stream ? " (stream)" : " (buffer)");
    if (kind == PortKind::stream)
        return m_stream->handle();
    const auto frame = static_cast<std::size_t>(m_stream->number(STREAM_INFO_PAYLOAD_SIZE));
    return m_stream->add_buffer(std::max(frame, least_buffer));
}

PortFeatures::PortFeatures(const PortOptions& options)
    : m_port(options), m_map(unpack(m_port.description()), m_port.port())
{
}

std::unique_ptr<NodeMap> make_node_map(const Port& port)
{
    return std::make_unique<NodeMap>(unpack(read_description(port, port.urls())), port);
}

void set_all(const Assignments& assignments, const NodeMap& map)
{
    for (const auto& assignment : assignments)
        map.set(assignment.name, assignment.value);
}

} // namespace zvgentl::tool
