#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "gentl/Producer.h"

namespace zvgentl::tool {

/// The producer's system module, open while the object lives.
class System {
public:
    /// Opens it and looks for interfaces.
    explicit System(const Producer& producer);
    ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    const Producer& producer() const noexcept { return m_producer; }
    GenTL::TL_HANDLE handle() const noexcept { return m_handle; }

    std::vector<std::string> interface_ids() const;
    std::optional<std::string> interface_text(const std::string& id, GenTL::INTERFACE_INFO_CMD command) const;

private:
    const Producer& m_producer;
    GenTL::TL_HANDLE m_handle{nullptr};
};

/// An interface (a frame grabber), open while the object lives.
class Interface {
public:
    /// Opens it and looks for devices.
    Interface(const System& system, const std::string& id);
    ~Interface();
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;

    const Producer& producer() const noexcept { return m_producer; }
    GenTL::IF_HANDLE handle() const noexcept { return m_handle; }

    std::vector<std::string> device_ids() const;
    std::optional<std::string> device_text(const std::string& id, GenTL::DEVICE_INFO_CMD command) const;
    std::optional<std::uint64_t> device_number(const std::string& id, GenTL::DEVICE_INFO_CMD command) const;

private:
    const Producer& m_producer;
    GenTL::IF_HANDLE m_handle{nullptr};
};

/// A device (a camera), open while the object lives.
class Device {
public:
    Device(const Interface& iface, const std::string& id);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const Producer& producer() const noexcept { return m_producer; }
    GenTL::DEV_HANDLE handle() const noexcept { return m_handle; }

    std::vector<std::string> stream_ids() const;
    /// The port of the camera itself; the handle stays the device's.
    GenTL::PORT_HANDLE remote_port() const;

private:
    const Producer& m_producer;
    GenTL::DEV_HANDLE m_handle{nullptr};
};

} // namespace zvgentl::tool
