#include "benchmarks/BareSystem.h"

#include <algorithm>

namespace zvbench {

using namespace GenTL;
using zvsystem::check;

namespace {

constexpr size_t cameras_per_grabber = 16;

} // namespace

BareSystem::BareSystem(const BareLibraries& libraries, const Setup& setup)
    : m_libraries{libraries}, m_setup{setup},
      m_grabbers{static_cast<uint32_t>((setup.cameras + cameras_per_grabber - 1) / cameras_per_grabber)}
{
    m_surroundings.set_mode(setup.mode);
    if (setup.is_polling)
        m_surroundings.let_events_poll();
    m_libraries.set_up(m_grabbers + 1, static_cast<uint32_t>(std::min(setup.cameras, cameras_per_grabber)),
                       setup.payload);
    const auto start = std::chrono::steady_clock::now();
    open_cameras();
    m_opened_in = std::chrono::steady_clock::now() - start;
}

BareSystem::~BareSystem()
{
    for (const OpenStream& open : streams) {
        gentl.DSStopAcquisition(open.stream, ACQ_STOP_FLAGS_DEFAULT);
        gentl.DSClose(open.stream);
    }
    gentl.TLClose(m_system);
}

void BareSystem::open_cameras()
{
    check(gentl.TLOpen(&m_system), "TLOpen");
    for (uint32_t grabber = 0; streams.size() < m_setup.cameras; ++grabber) {
        IF_HANDLE iface = nullptr;
        const std::string number = std::to_string(grabber);
        check(gentl.TLOpenInterface(m_system, ("FG" + number).c_str(), &iface), "TLOpenInterface");
        check(gentl.IFUpdateDeviceList(iface, nullptr, 0), "IFUpdateDeviceList");
        for (size_t camera = 0; camera < cameras_per_grabber && streams.size() < m_setup.cameras; ++camera)
            streams.push_back(open(iface, number + std::to_string(camera)));
    }
}

OpenStream BareSystem::open(IF_HANDLE iface, const std::string& number)
{
    DEV_HANDLE device = nullptr;
    DS_HANDLE stream = nullptr;
    EVENT_HANDLE event = nullptr;
    std::vector<BUFFER_HANDLE> buffers;
    std::vector<uint64_t> library_handles;
    check(gentl.IFOpenDevice(iface, ("Device" + number).c_str(), DEVICE_ACCESS_CONTROL, &device),
          "IFOpenDevice");
    check(gentl.DevOpenDataStream(device, ("Stream" + number + "0").c_str(), &stream), "DevOpenDataStream");
    check(gentl.GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
    for (size_t i = 0; i < m_setup.buffers; ++i) {
        BUFFER_HANDLE buffer = nullptr;
        check(gentl.DSAllocAndAnnounceBuffer(stream, m_setup.payload, nullptr, &buffer),
              "DSAllocAndAnnounceBuffer");
        check(gentl.DSQueueBuffer(stream, buffer), "DSQueueBuffer");
        buffers.push_back(buffer);
        library_handles.push_back(m_libraries.last_buffer());
    }
    if (!buffers.empty())
        check(gentl.DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
              "DSStartAcquisition");
    const bool is_queued = m_setup.mode == zvsystem::Mode::queued;
    Source source = is_queued ? Source{m_libraries, std::move(library_handles)}
                              : Source{m_libraries, m_libraries.last_stream()};
    return {stream, event, std::move(buffers), std::move(source)};
}

} // namespace zvbench
