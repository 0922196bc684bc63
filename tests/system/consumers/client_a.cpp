#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "system/consumers/Client.h"

// A consumer that asks for every size first, with a null buffer and whatever its size variable contained;
// that looks at everything once, closes it all and opens it again; and that starts the acquisition before
// anyone listens: another thread registers the event and queues the buffers meanwhile.

namespace {

using namespace GenTL;
using namespace zvclient;

constexpr std::size_t uninitialised = 0xCDCDCDCDCDCDCDCD;
constexpr std::size_t buffer_count = 16;
constexpr int wanted_frames = 30;

template <class Query>
std::string sized_id(const Query& query, const char* call)
{
    std::size_t size = uninitialised;
    need(query(nullptr, &size), call);
    std::string text(size, '?');
    need(query(text.data(), &size), call);
    need_true(size == text.size() && text.back() == '\0', std::string(call) + " gave another size");
    text.pop_back();
    return text;
}

template <class Query>
std::string sized_text(const Query& query, const char* call)
{
    auto type = static_cast<INFO_DATATYPE>(0xCDCD);
    const auto text =
        sized_id([&](char* buffer, std::size_t* size) { return query(&type, buffer, size); }, call);
    need_true(type == INFO_DATATYPE_STRING, std::string(call) + " did not give a string");
    return text;
}

class ClientA : Client {
public:
    using Client::Client;

    void run()
    {
        discover();
        open();
        read_features([this](const ExactPort& port) { return description_of(port, url_of(port.handle())); });
        configure();
        stream();
        close();
    }

private:
    std::vector<std::string> interface_ids(TL_HANDLE system) const
    {
        std::uint32_t count = 0;
        need(gentl.TLGetNumInterfaces(system, &count), "TLGetNumInterfaces");
        std::vector<std::string> ids;
        for (std::uint32_t index = 0; index < count; ++index)
            ids.push_back(sized_id(
                [&](char* id, std::size_t* size) { return gentl.TLGetInterfaceID(system, index, id, size); },
                "TLGetInterfaceID"));
        return ids;
    }

    void discover()
    {
        TL_HANDLE system = nullptr;
        need(gentl.TLOpen(&system), "TLOpen");
        bool8_t has_changed = 0;
        need(gentl.TLUpdateInterfaceList(system, &has_changed, 100), "TLUpdateInterfaceList");
        for (const std::string& id : interface_ids(system)) {
            for (const INTERFACE_INFO_CMD command : {INTERFACE_INFO_DISPLAYNAME, INTERFACE_INFO_TLTYPE})
                sized_text(
                    [&](INFO_DATATYPE* type, void* text, std::size_t* size) {
                        return gentl.TLGetInterfaceInfo(system, id.c_str(), command, type, text, size);
                    },
                    "TLGetInterfaceInfo");
            IF_HANDLE interface_handle = nullptr;
            need(gentl.TLOpenInterface(system, id.c_str(), &interface_handle), "TLOpenInterface");
            discover_devices(interface_handle);
            need(gentl.IFClose(interface_handle), "IFClose");
        }
        need(gentl.TLClose(system), "TLClose");
        need_true(m_devices == 3, "found " + std::to_string(m_devices) + " devices");
    }

    void discover_devices(IF_HANDLE interface_handle)
    {
        bool8_t has_changed = 0;
        need(gentl.IFUpdateDeviceList(interface_handle, &has_changed, 100), "IFUpdateDeviceList");
        std::uint32_t count = 0;
        need(gentl.IFGetNumDevices(interface_handle, &count), "IFGetNumDevices");
        for (std::uint32_t index = 0; index < count; ++index) {
            const std::string id = sized_id(
                [&](char* text, std::size_t* size) {
                    return gentl.IFGetDeviceID(interface_handle, index, text, size);
                },
                "IFGetDeviceID");
            for (const DEVICE_INFO_CMD command :
                 {DEVICE_INFO_VENDOR, DEVICE_INFO_MODEL, DEVICE_INFO_SERIAL_NUMBER, DEVICE_INFO_TLTYPE})
                sized_text(
                    [&](INFO_DATATYPE* type, void* text, std::size_t* size) {
                        return gentl.IFGetDeviceInfo(interface_handle, id.c_str(), command, type, text, size);
                    },
                    "IFGetDeviceInfo");
        }
        m_devices += count;
    }

    void open()
    {
        bool8_t has_changed = 0;
        need(gentl.TLOpen(&m_system), "TLOpen");
        need(gentl.TLUpdateInterfaceList(m_system, &has_changed, 100), "TLUpdateInterfaceList");
        need(gentl.TLOpenInterface(m_system, interface_ids(m_system).front().c_str(), &m_interface),
             "TLOpenInterface");
        need(gentl.IFUpdateDeviceList(m_interface, &has_changed, 100), "IFUpdateDeviceList");
        const std::string id = sized_id(
            [&](char* text, std::size_t* size) { return gentl.IFGetDeviceID(m_interface, 0, text, size); },
            "IFGetDeviceID");
        need(gentl.IFOpenDevice(m_interface, id.c_str(), DEVICE_ACCESS_EXCLUSIVE, &m_device), "IFOpenDevice");
        need(gentl.DevGetPort(m_device, &m_remote), "DevGetPort");

        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        std::uint64_t frequency = 0;
        std::size_t size = sizeof frequency;
        need(gentl.DevGetInfo(m_device, DEVICE_INFO_TIMESTAMP_FREQUENCY, &type, &frequency, &size),
             "DevGetInfo");
        need_true(type == INFO_DATATYPE_UINT64 && size == 8 && frequency == 25000000,
                  "the frequency of the time stamps is wrong");
        const std::string stream = sized_id(
            [&](char* text, std::size_t* room) { return gentl.DevGetDataStreamID(m_device, 0, text, room); },
            "DevGetDataStreamID");
        need(gentl.DevOpenDataStream(m_device, stream.c_str(), &m_stream), "DevOpenDataStream");
    }

    std::string url_of(PORT_HANDLE port) const
    {
        return sized_text(
            [&](INFO_DATATYPE* type, void* text, std::size_t* size) {
                return gentl.GCGetPortURLInfo(port, 0, URL_INFO_URL, type, text, size);
            },
            "GCGetPortURLInfo");
    }

    void configure()
    {
        m_features->set("PixelFormat", "Mono12");
        m_features->set("Width", "240");
        m_features->set("OffsetX", "40");
        m_features->set("ExposureTime", "5000");
        m_features->set("AcquisitionMode", "Continuous");
        m_payload = static_cast<std::size_t>(m_features->integer("PayloadSize"));
        need_true(m_payload == std::size_t{240} * 240 * 2, "the payload does not fit the new size");
    }

    void announce_all()
    {
        m_memory.assign(buffer_count, std::vector<unsigned char>(m_payload));
        for (auto& memory : m_memory)
            m_buffers.push_back(announce(memory, &memory));
    }

    /// Registers, queues and receives until its wait is killed.
    void receive_until_killed(std::promise<EVENT_HANDLE> registered, std::promise<void> enough)
    {
        const EVENT_HANDLE event = register_event();
        for (const BUFFER_HANDLE buffer : m_buffers)
            queue(buffer);
        registered.set_value(event);
        FrameCheck check;
        for (;;) {
            EVENT_NEW_BUFFER_DATA data{};
            std::size_t size = sizeof data;
            const GC_ERROR code = gentl.EventGetData(event, &data, &size, GENTL_INFINITE);
            if (code == GC_ERR_ABORT)
                return;
            if (code == GC_ERR_TIMEOUT) // its wait was ended for a frame that had been taken already
                continue;
            need(code, "EventGetData");
            const auto& memory = *static_cast<const std::vector<unsigned char>*>(data.pUserPointer);
            check.expect_newer(memory.data(), memory.size());
            if (check.frames() == wanted_frames)
                enough.set_value();
            queue(data.BufferHandle);
        }
    }

    void stream()
    {
        announce_all();
        std::promise<EVENT_HANDLE> registered;
        std::promise<void> enough;
        std::future<EVENT_HANDLE> event = registered.get_future();
        std::future<void> has_enough = enough.get_future();
        std::future<void> receiver = std::async(std::launch::async, &ClientA::receive_until_killed, this,
                                                std::move(registered), std::move(enough));

        m_features->set("TLParamsLocked", "1");
        start();
        m_features->execute("AcquisitionStart", std::chrono::seconds{1});
        has_enough.wait(); // or the receiver has failed, which is rethrown below
        if (receiver.wait_for(std::chrono::seconds{0}) == std::future_status::ready)
            receiver.get();
        m_features->execute("AcquisitionStop", std::chrono::seconds{1});
        stop();
        m_features->set("TLParamsLocked", "0");
        need(gentl.EventKill(event.get()), "EventKill");
        receiver.get();
        unregister_event();
        flush(ACQ_QUEUE_ALL_DISCARD);
        for (const BUFFER_HANDLE buffer : m_buffers)
            need(gentl.DSRevokeBuffer(m_stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
    }

    std::uint32_t m_devices{0};
    std::vector<std::vector<unsigned char>> m_memory;
    std::vector<BUFFER_HANDLE> m_buffers;
};

} // namespace

void zvclient::run_client_a(const Functions& gentl) { ClientA{gentl}.run(); }
