#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "system/consumers/Client.h"

// A consumer that takes the descriptions of all six kinds of module, reads every feature and writes every
// writable one, and then streams with what it has set.

namespace {

using namespace GenTL;
using namespace zvclient;

class ClientE : Client {
public:
    using Client::Client;

    void run()
    {
        need(gentl.TLOpen(&m_system), "TLOpen");
        need(gentl.TLUpdateInterfaceList(m_system, nullptr, 1000), "TLUpdateInterfaceList");
        std::uint32_t interfaces = 0;
        need(gentl.TLGetNumInterfaces(m_system, &interfaces), "TLGetNumInterfaces");
        use_features("system", m_system);
        for (std::uint32_t index = 0; index < interfaces; ++index)
            use_interface(index);
        need(gentl.TLClose(m_system), "TLClose");
        need_true(m_cameras == 3, "there are not three cameras");
    }

private:
    template <class Query>
    static std::string text_of(const Query& query, const char* call)
    {
        std::size_t size = 0;
        need(query(nullptr, &size), call);
        std::vector<char> text(size);
        need(query(text.data(), &size), call);
        return text.data();
    }

    std::unique_ptr<Features> features_of(const ExactPort& port) const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        const std::string url = text_of(
            [&](char* text, std::size_t* size) {
                return gentl.GCGetPortURLInfo(port.handle(), 0, URL_INFO_URL, &type, text, size);
            },
            "GCGetPortURLInfo");
        return std::make_unique<Features>(description_of(port, url), port);
    }

    void use_features(const char* name, PORT_HANDLE handle) const
    {
        const ExactPort port{gentl, handle};
        const auto features = features_of(port);
        const int read = features->read_every();
        const int written = features->write_every();
        std::cout << name << ": " << read << " features read, " << written << " written\n";
    }

    void use_interface(std::uint32_t index)
    {
        const std::string id =
            text_of([&](char* text,
                        std::size_t* size) { return gentl.TLGetInterfaceID(m_system, index, text, size); },
                    "TLGetInterfaceID");
        need(gentl.TLOpenInterface(m_system, id.c_str(), &m_interface), "TLOpenInterface");
        need(gentl.IFUpdateDeviceList(m_interface, nullptr, 1000), "IFUpdateDeviceList");
        use_features("interface", m_interface);
        std::uint32_t devices = 0;
        need(gentl.IFGetNumDevices(m_interface, &devices), "IFGetNumDevices");
        for (std::uint32_t device = 0; device < devices; ++device)
            use_device(device);
        need(gentl.IFClose(m_interface), "IFClose");
    }

    void use_device(std::uint32_t index)
    {
        const std::string id =
            text_of([&](char* text,
                        std::size_t* size) { return gentl.IFGetDeviceID(m_interface, index, text, size); },
                    "IFGetDeviceID");
        need(gentl.IFOpenDevice(m_interface, id.c_str(), DEVICE_ACCESS_EXCLUSIVE, &m_device), "IFOpenDevice");
        use_features("device", m_device);
        need(gentl.DevGetPort(m_device, &m_remote), "DevGetPort");
        use_features("remote device", m_remote);
        const std::string stream = text_of(
            [&](char* text, std::size_t* size) { return gentl.DevGetDataStreamID(m_device, 0, text, size); },
            "DevGetDataStreamID");
        need(gentl.DevOpenDataStream(m_device, stream.c_str(), &m_stream), "DevOpenDataStream");
        use_features("stream", m_stream);
        const ExactPort port{gentl, m_remote};
        acquire(*features_of(port));
        need(gentl.DSClose(m_stream), "DSClose");
        need(gentl.DevClose(m_device), "DevClose");
        ++m_cameras;
    }

    void acquire(const Features& camera) const
    {
        camera.set("ExposureTime", "10000");
        const auto payload = static_cast<std::size_t>(camera.integer("PayloadSize"));
        std::vector<std::vector<unsigned char>> memory(4, std::vector<unsigned char>(payload));
        for (auto& frame : memory) {
            const BUFFER_HANDLE buffer = announce(frame, frame.data());
            need_true(features_of(ExactPort{gentl, buffer})->is_empty(), "a buffer has features");
            queue(buffer);
        }
        const EVENT_HANDLE event = register_event();
        start();
        FrameCheck check;
        receive(10, event, 1000,
                [&](const EVENT_NEW_BUFFER_DATA& data) { check.expect_newer(data.pUserPointer, payload); });
        stop();
        unregister_event();
        flush(ACQ_QUEUE_ALL_DISCARD);
        revoke_the_first_until_none_is_left();
    }

    int m_cameras{0};
};

} // namespace

void zvclient::run_client_e(const Functions& gentl) { ClientE{gentl}.run(); }
