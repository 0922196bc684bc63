#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "system/consumers/client.h"
#include "system/consumers/features.h"

// A consumer of the first GenTL versions: it asks for a port's URL with a buffer of 256 bytes, registers its
// event before there is any buffer, and never blocks: it polls with time-outs of one millisecond and of none.

namespace {

using namespace GenTL;
using namespace zvclient;

constexpr std::size_t buffer_count = 5;
constexpr int wanted_frames = 20;

class ClientD {
public:
    explicit ClientD(const Functions& functions) : gentl{functions} {}

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
        need(gentl.TLOpen(&m_system), "TLOpen");
        need(gentl.TLUpdateInterfaceList(m_system, nullptr, 0), "TLUpdateInterfaceList");
        char id[64] = {};
        std::size_t size = sizeof id;
        need(gentl.TLGetInterfaceID(m_system, 0, id, &size), "TLGetInterfaceID");
        need(gentl.TLOpenInterface(m_system, id, &m_interface), "TLOpenInterface");
        need(gentl.IFUpdateDeviceList(m_interface, nullptr, 0), "IFUpdateDeviceList");
        size = sizeof id;
        need(gentl.IFGetDeviceID(m_interface, 1, id, &size), "IFGetDeviceID");
        need(gentl.IFOpenDevice(m_interface, id, DEVICE_ACCESS_EXCLUSIVE, &m_device), "IFOpenDevice");
        need(gentl.DevGetPort(m_device, &m_remote), "DevGetPort");
        size = sizeof id;
        need(gentl.DevGetDataStreamID(m_device, 0, id, &size), "DevGetDataStreamID");
        need(gentl.DevOpenDataStream(m_device, id, &m_stream), "DevOpenDataStream");
        need(gentl.GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &m_event), "GCRegisterEvent");
    }

    std::string description_of_port(const ExactPort& port) const
    {
        char url[256] = {};
        std::size_t size = sizeof url;
        need(gentl.GCGetPortURL(port.handle(), url, &size), "GCGetPortURL");
        return description_of(port, url);
    }

    void read_features()
    {
        for (const PORT_HANDLE handle : {m_system, m_interface, m_device, m_stream}) {
            const ExactPort port{gentl, handle};
            Features{description_of_port(port), port}.read_every();
        }
        m_port = std::make_unique<ExactPort>(gentl, m_remote);
        m_features = std::make_unique<Features>(description_of_port(*m_port), *m_port);
        m_features->read_every();
    }

    void configure()
    {
        m_features->set("Width", "96");
        m_features->set("Height", "64");
        m_features->set("PixelFormat", "Mono16");
        m_payload = static_cast<std::size_t>(m_features->integer("PayloadSize"));
        need_true(m_payload == std::size_t{96} * 64 * 2, "the payload of the new size");
    }

    void announce_and_queue()
    {
        m_memory.assign(buffer_count, std::vector<unsigned char>(m_payload));
        for (auto& memory : m_memory) {
            BUFFER_HANDLE buffer = nullptr;
            need(gentl.DSAnnounceBuffer(m_stream, memory.data(), memory.size(), nullptr, &buffer),
                 "DSAnnounceBuffer");
            need(gentl.DSQueueBuffer(m_stream, buffer), "DSQueueBuffer");
            m_buffers[buffer] = memory.data();
        }
    }

    void stream()
    {
        announce_and_queue();
        need(gentl.DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
             "DSStartAcquisition");
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
            need(gentl.DSQueueBuffer(m_stream, data.BufferHandle), "DSQueueBuffer");
        }
        need(gentl.DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_KILL), "DSStopAcquisition");
        need(gentl.DSFlushQueue(m_stream, ACQ_QUEUE_ALL_DISCARD), "DSFlushQueue");
        for (const auto& buffer : m_buffers)
            need(gentl.DSRevokeBuffer(m_stream, buffer.first, nullptr, nullptr), "DSRevokeBuffer");
        need(gentl.GCUnregisterEvent(m_stream, EVENT_NEW_BUFFER), "GCUnregisterEvent");
    }

    void close()
    {
        need(gentl.DSClose(m_stream), "DSClose");
        need(gentl.DevClose(m_device), "DevClose");
        need(gentl.IFClose(m_interface), "IFClose");
        need(gentl.TLClose(m_system), "TLClose");
    }

    const Functions& gentl;
    TL_HANDLE m_system{nullptr};
    IF_HANDLE m_interface{nullptr};
    DEV_HANDLE m_device{nullptr};
    PORT_HANDLE m_remote{nullptr};
    DS_HANDLE m_stream{nullptr};
    EVENT_HANDLE m_event{nullptr};
    std::unique_ptr<ExactPort> m_port;
    std::unique_ptr<Features> m_features;
    std::size_t m_payload{0};
    std::vector<std::vector<unsigned char>> m_memory;
    std::map<BUFFER_HANDLE, const unsigned char*> m_buffers;
};

} // namespace

int main(int count, char** arguments)
{
    return run_client(count, arguments, [](const Functions& gentl) { ClientD{gentl}.run(); });
}
