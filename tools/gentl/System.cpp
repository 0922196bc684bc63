#include "gentl/System.h"

#include "gentl/Error.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

// Producers decide themselves how long a scan takes; this is what we allow one that asks.
constexpr std::uint64_t scan_timeout_ms = 1000;

} // namespace

System::System(const Producer& producer) : m_producer(producer)
{
    m_producer.check(m_producer.functions().TLOpen(&m_handle), "TLOpen");
    try {
        m_producer.check(m_producer.functions().TLUpdateInterfaceList(m_handle, nullptr, scan_timeout_ms),
                         "TLUpdateInterfaceList");
    } catch (...) {
        m_producer.functions().TLClose(m_handle);
        throw;
    }
}

System::~System() { m_producer.functions().TLClose(m_handle); }

std::vector<std::string> System::interface_ids() const
{
    const Functions& functions = m_producer.functions();
    std::uint32_t count = 0;
    m_producer.check(functions.TLGetNumInterfaces(m_handle, &count), "TLGetNumInterfaces");
    std::vector<std::string> ids;
    for (std::uint32_t i = 0; i < count; ++i)
        ids.push_back(read_id(m_producer, "TLGetInterfaceID", [&](char* buffer, std::size_t* size) {
            return functions.TLGetInterfaceID(m_handle, i, buffer, size);
        }));
    return ids;
}

std::optional<std::string> System::interface_text(const std::string& id, INTERFACE_INFO_CMD command) const
{
    return find_text(m_producer, "TLGetInterfaceInfo",
                     [&](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
                         return m_producer.functions().TLGetInterfaceInfo(m_handle, id.c_str(), command, type,
                                                                          buffer, size);
                     });
}

Interface::Interface(const System& system, const std::string& id) : m_producer(system.producer())
{
    const Functions& functions = m_producer.functions();
    m_producer.check(functions.TLOpenInterface(system.handle(), id.c_str(), &m_handle), "TLOpenInterface");
    try {
        m_producer.check(functions.IFUpdateDeviceList(m_handle, nullptr, scan_timeout_ms),
                         "IFUpdateDeviceList");
    } catch (...) {
        functions.IFClose(m_handle);
        throw;
    }
}

Interface::~Interface() { m_producer.functions().IFClose(m_handle); }

std::vector<std::string> Interface::device_ids() const
{
    const Functions& functions = m_producer.functions();
    std::uint32_t count = 0;
    m_producer.check(functions.IFGetNumDevices(m_handle, &count), "IFGetNumDevices");
    std::vector<std::string> ids;
    for (std::uint32_t i = 0; i < count; ++i)
        ids.push_back(read_id(m_producer, "IFGetDeviceID", [&](char* buffer, std::size_t* size) {
            return functions.IFGetDeviceID(m_handle, i, buffer, size);
        }));
    return ids;
}

std::optional<std::string> Interface::device_text(const std::string& id, DEVICE_INFO_CMD command) const
{
    return find_text(
        m_producer, "IFGetDeviceInfo", [&](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
            return m_producer.functions().IFGetDeviceInfo(m_handle, id.c_str(), command, type, buffer, size);
        });
}

std::optional<std::uint64_t> Interface::device_number(const std::string& id, DEVICE_INFO_CMD command) const
{
    return find_number(
        m_producer, "IFGetDeviceInfo", [&](INFO_DATATYPE* type, void* buffer, std::size_t* size) {
            return m_producer.functions().IFGetDeviceInfo(m_handle, id.c_str(), command, type, buffer, size);
        });
}

Device::Device(const Interface& iface, const std::string& id) : m_producer(iface.producer())
{
    m_producer.check(
        m_producer.functions().IFOpenDevice(iface.handle(), id.c_str(), DEVICE_ACCESS_CONTROL, &m_handle),
        "IFOpenDevice");
}

Device::~Device() { m_producer.functions().DevClose(m_handle); }

std::vector<std::string> Device::stream_ids() const
{
    const Functions& functions = m_producer.functions();
    std::uint32_t count = 0;
    m_producer.check(functions.DevGetNumDataStreams(m_handle, &count), "DevGetNumDataStreams");
    std::vector<std::string> ids;
    for (std::uint32_t i = 0; i < count; ++i)
        ids.push_back(read_id(m_producer, "DevGetDataStreamID", [&](char* buffer, std::size_t* size) {
            return functions.DevGetDataStreamID(m_handle, i, buffer, size);
        }));
    return ids;
}

PORT_HANDLE Device::remote_port() const
{
    PORT_HANDLE port = nullptr;
    m_producer.check(m_producer.functions().DevGetPort(m_handle, &port), "DevGetPort");
    return port;
}

} // namespace zvgentl::tool
