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
        read_features([this](const ExactPort& port) { return description_of_port(port); });
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
        m_event = register_event();
    }

    std::string description_of_port(const ExactPort& port) const
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
        m_payload = static_cast<std::size_t>(m_features->integer("PayloadSize"));
        need_true(m_payload == std::size_t{96} * 64 * 2, "the payload does not fit the new size");
    }

    void announce_and_queue()
    {
        m_memory.assign(buffer_count, std::vector<unsigned char>(m_payload));
        for (auto& memory : m_memory) {
            const BUFFER_HANDLE buffer = announce(memory, nullptr);
            queue(buffer);
            m_buffers[buffer] = memory.data();
        }
    }

    void stream()
    {
        announce_and_queue();
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
            need(gentl.DSRevokeBuffer(m_stream, buffer.first, nullptr, nullptr), "DSRevokeBuffer");
        unregister_event();
    }

    EVENT_HANDLE m_event{nullptr};
    std::vector<std::vector<unsigned char>> m_memory;
    std::map<BUFFER_HANDLE, const unsigned char*> m_buffers;
};

} // namespace

void zvclient::run_client_d(const Functions& gentl) { ClientD{gentl}.run(); }
