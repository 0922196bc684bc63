#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "system/consumers/Client.h"

// A consumer of the first GenTL versions: it asks for a port's URL with a buffer of 256 bytes, registers its
// event before there is any buffer, and never blocks: it polls with time-outs of one millisecond and of none.

namespace {

using namespace GenTL;
using namespace zvclient;

constexpr std::size_t buffer_count = 5;
constexpr int wanted_frames = 20;

class ClientD : Client {
public:
    using Client::Client;

    void run()
    {
        open();
        read_features();
        configure();
        stream();
        close();
    }

private:
    void open()
    {
        open_system(0);
        open_interface(id("TLGetInterfaceID", gentl.TLGetInterfaceID, m_system, 0U), 0);
        open_device(id("IFGetDeviceID", gentl.IFGetDeviceID, m_interface, 1U), DEVICE_ACCESS_EXCLUSIVE);
        open_stream(stream_id());
        m_event = register_event();
    }

    std::string describe(const ExactPort& port) const override
    {
        char url[256] = {};
        std::size_t size = sizeof url;
        need(gentl.GCGetPortURL(port.handle(), url, &size), "GCGetPortURL");
        return description_of(port, url);
    }

    void configure()
    {
        m_features->set("Width", "96");
        m_features->set("Height", "64");
        m_features->set("PixelFormat", "Mono16");
        take_payload(std::size_t{96} * 64 * 2);
    }

    void stream()
    {
        for (auto& memory : make_memory(buffer_count)) {
            const BUFFER_HANDLE buffer = announce(memory, nullptr);
            queue(buffer);
            m_buffers[buffer] = memory.data();
        }
        start();
        FrameCheck check;
        for (std::uint64_t polls = 0; check.frames() < wanted_frames; ++polls) {
            EVENT_NEW_BUFFER_DATA data{};
            std::size_t size = sizeof data;
            const GC_ERROR code = gentl.EventGetData(m_event, &data, &size, polls % 2);
            if (code == GC_ERR_TIMEOUT) {
                std::this_thread::yield();
                continue;
            }
            need(code, "EventGetData");
            check.expect_newer(m_buffers.at(data.BufferHandle), m_payload);
            queue(data.BufferHandle);
        }
        need(gentl.DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_KILL), "DSStopAcquisition");
        flush(ACQ_QUEUE_ALL_DISCARD);
        for (const auto& buffer : m_buffers)
            revoke(buffer.first);
        unregister_event();
    }

    EVENT_HANDLE m_event{nullptr};
    std::map<BUFFER_HANDLE, const unsigned char*> m_buffers;
};

} // namespace

void zvclient::run_client_d(const Functions& gentl) { ClientD{gentl}.run(); }
