#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "system/consumers/client.h"
#include "system/consumers/features.h"

// A consumer that takes the descriptions of all six kinds of module, reads every feature and writes every
// writable one, and then streams with what it has set.

namespace {

using namespace GenTL;
using namespace zvclient;

constexpr int buffer_count = 4;
constexpr int wanted_frames = 10;

class ClientE {
public:
    explicit ClientE(const Functions& functions) : gentl{functions} {}

    void run()
    {
        need(gentl.TLOpen(&m_system), "TLOpen");
        need(gentl.TLUpdateInterfaceList(m_system, nullptr, 1000), "TLUpdateInterfaceList");
        std::uint32_t interfaces = 0;
        need(gentl.TLGetNumInterfaces(m_system, &interfaces), "TLGetNumInterfaces");
        use_features("system", m_system, Expected::some);
        for (std::uint32_t index = 0; index < interfaces; ++index)
            use_interface(index);
        need(gentl.TLClose(m_system), "TLClose");
        need_true(m_cameras == 3, "three cameras were used");
    }

private:
    enum class Expected { none, some };

    template <class Query>
    static std::string id_of(const Query& query, const char* call)
    {
        std::size_t size = 0;
        need(query(nullptr, &size), call);
        std::vector<char> text(size);
        need(query(text.data(), &size), call);
        return text.data();
    }

    std::string url_of(PORT_HANDLE port) const
    {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        return id_of(
            [&](char* text, std::size_t* size) {
                return gentl.GCGetPortURLInfo(port, 0, URL_INFO_URL, &type, text, size);
            },
            "GCGetPortURLInfo");
    }

    std::unique_ptr<Features> features_of(const ExactPort& port) const
    {
        return std::make_unique<Features>(description_of(port, url_of(port.handle())), port);
    }

    void use_features(const char* name, PORT_HANDLE handle, Expected expected) const
    {
        const ExactPort port{gentl, handle};
        const auto features = features_of(port);
        if (expected == Expected::none) {
            need_true(features->is_empty(), std::string(name) + " has features");
            return;
        }
        const int read = features->read_every();
        const int written = features->write_every();
        std::cout << name << ": " << read << " features read, " << written << " written\n";
    }

    void use_interface(std::uint32_t index)
    {
        const std::string id =
            id_of([&](char* text,
                      std::size_t* size) { return gentl.TLGetInterfaceID(m_system, index, text, size); },
                  "TLGetInterfaceID");
        IF_HANDLE opened = nullptr;
        need(gentl.TLOpenInterface(m_system, id.c_str(), &opened), "TLOpenInterface");
        need(gentl.IFUpdateDeviceList(opened, nullptr, 1000), "IFUpdateDeviceList");
        use_features("interface", opened, Expected::some);
        std::uint32_t devices = 0;
        need(gentl.IFGetNumDevices(opened, &devices), "IFGetNumDevices");
        for (std::uint32_t device = 0; device < devices; ++device)
            use_device(opened, device);
        need(gentl.IFClose(opened), "IFClose");
    }

    void use_device(IF_HANDLE opened, std::uint32_t index)
    {
        const std::string id = id_of(
            [&](char* text, std::size_t* size) { return gentl.IFGetDeviceID(opened, index, text, size); },
            "IFGetDeviceID");
        DEV_HANDLE device = nullptr;
        need(gentl.IFOpenDevice(opened, id.c_str(), DEVICE_ACCESS_EXCLUSIVE, &device), "IFOpenDevice");
        use_features("device", device, Expected::some);
        PORT_HANDLE remote = nullptr;
        need(gentl.DevGetPort(device, &remote), "DevGetPort");
        use_features("remote device", remote, Expected::some);
        const std::string stream_id = id_of(
            [&](char* text, std::size_t* size) { return gentl.DevGetDataStreamID(device, 0, text, size); },
            "DevGetDataStreamID");
        DS_HANDLE stream = nullptr;
        need(gentl.DevOpenDataStream(device, stream_id.c_str(), &stream), "DevOpenDataStream");
        use_features("stream", stream, Expected::some);
        const ExactPort port{gentl, remote};
        receive(stream, *features_of(port));
        need(gentl.DSClose(stream), "DSClose");
        need(gentl.DevClose(device), "DevClose");
        ++m_cameras;
    }

    void receive(DS_HANDLE stream, const Features& camera) const
    {
        camera.set("ExposureTime", "10000");
        const auto payload = static_cast<std::size_t>(camera.integer("PayloadSize"));
        std::vector<std::vector<unsigned char>> memory(buffer_count, std::vector<unsigned char>(payload));
        for (auto& frame : memory) {
            BUFFER_HANDLE buffer = nullptr;
            need(gentl.DSAnnounceBuffer(stream, frame.data(), frame.size(), frame.data(), &buffer),
                 "DSAnnounceBuffer");
            use_features("buffer", buffer, Expected::none);
            need(gentl.DSQueueBuffer(stream, buffer), "DSQueueBuffer");
        }
        EVENT_HANDLE event = nullptr;
        need(gentl.GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
        need(gentl.DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), "DSStartAcquisition");
        FrameCheck check;
        while (check.frames() < wanted_frames) {
            EVENT_NEW_BUFFER_DATA data{};
            std::size_t size = sizeof data;
            const GC_ERROR code = gentl.EventGetData(event, &data, &size, 1000);
            if (code == GC_ERR_TIMEOUT)
                continue;
            need(code, "EventGetData");
            check.expect_newer(data.pUserPointer, payload);
            need(gentl.DSQueueBuffer(stream, data.BufferHandle), "DSQueueBuffer");
        }
        need(gentl.DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
        need(gentl.GCUnregisterEvent(stream, EVENT_NEW_BUFFER), "GCUnregisterEvent");
        need(gentl.DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD), "DSFlushQueue");
        BUFFER_HANDLE buffer = nullptr;
        while (gentl.DSGetBufferID(stream, 0, &buffer) == GC_ERR_SUCCESS)
            need(gentl.DSRevokeBuffer(stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
    }

    const Functions& gentl;
    TL_HANDLE m_system{nullptr};
    int m_cameras{0};
};

} // namespace

int main(int count, char** arguments)
{
    return run_client(count, arguments, [](const Functions& gentl) { ClientE{gentl}.run(); });
}
