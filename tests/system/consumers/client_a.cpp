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

class ClientA : Client {
public:
    using Client::Client;

    void run()
    {
        discover();
        open();
        read_features();
        configure();
        stream();
        close();
    }

private:
    std::string text(const char* call, const TextQuery& query) const override
    {
        return text_after_its_size(call, query, uninitialised);
    }

    void discover()
    {
        open_system(100);
        for (const std::string& id : interface_ids()) {
            for (const INTERFACE_INFO_CMD command : {INTERFACE_INFO_DISPLAYNAME, INTERFACE_INFO_TLTYPE})
                info("TLGetInterfaceInfo", gentl.TLGetInterfaceInfo, m_system, id.c_str(), command);
            open_interface(id, 100);
            for (const std::string& device : device_ids())
                discover_device(device);
            need(gentl.IFClose(m_interface), "IFClose");
        }
        need(gentl.TLClose(m_system), "TLClose");
        need_true(m_devices == 3, "found " + std::to_string(m_devices) + " devices");
    }

    void discover_device(const std::string& id)
    {
        for (const DEVICE_INFO_CMD command :
             {DEVICE_INFO_VENDOR, DEVICE_INFO_MODEL, DEVICE_INFO_SERIAL_NUMBER, DEVICE_INFO_TLTYPE})
            info("IFGetDeviceInfo", gentl.IFGetDeviceInfo, m_interface, id.c_str(), command);
        ++m_devices;
    }

    void open()
    {
        open_system(100);
        open_interface(interface_ids().front(), 100);
        open_device(device_ids().front(), DEVICE_ACCESS_EXCLUSIVE);
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        std::uint64_t frequency = 0;
        std::size_t size = sizeof frequency;
        need(gentl.DevGetInfo(m_device, DEVICE_INFO_TIMESTAMP_FREQUENCY, &type, &frequency, &size),
             "DevGetInfo");
        need_true(type == INFO_DATATYPE_UINT64 && size == 8 && frequency == 25000000,
                  "the frequency of the time stamps is wrong");
        open_stream(stream_id());
    }

    void configure()
    {
        m_features->set("PixelFormat", "Mono12");
        m_features->set("Width", "240");
        m_features->set("OffsetX", "40");
        m_features->set("ExposureTime", "5000");
        m_features->set("AcquisitionMode", "Continuous");
        take_payload(std::size_t{240} * 240 * 2);
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
        for (auto& memory : make_memory(buffer_count))
            m_buffers.push_back(announce(memory, &memory));
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
            revoke(buffer);
    }

    int m_devices{0};
    std::vector<BUFFER_HANDLE> m_buffers;
};

} // namespace

void zvclient::run_client_a(const Functions& gentl) { ClientA{gentl}.run(); }
