#include "benchmarks/BareSystem.h"

namespace zvbench {

using namespace GenTL;
using zvsystem::check;

namespace {

constexpr uint32_t cameras_per_grabber = 16;

} // namespace

BareSystem::BareSystem(BareLibraries& libraries, size_t cameras, size_t buffers, uint64_t payload)
    : m_libraries{libraries}
{
    const auto grabbers = static_cast<uint32_t>((cameras + cameras_per_grabber - 1) / cameras_per_grabber);
    m_surroundings.expose_demo_grabber();
    m_libraries.set_up(grabbers,
                       cameras < cameras_per_grabber ? static_cast<uint32_t>(cameras) : cameras_per_grabber,
                       payload);
    check(gentl.TLOpen(&m_system), "TLOpen");
    for (uint32_t grabber = 0; streams.size() < cameras; ++grabber) {
        IF_HANDLE iface = nullptr;
        const std::string number = std::to_string(grabber);
        check(gentl.TLOpenInterface(m_system, ("FG" + number).c_str(), &iface), "TLOpenInterface");
        check(gentl.IFUpdateDeviceList(iface, nullptr, 0), "IFUpdateDeviceList");
        for (uint32_t camera = 0; camera < cameras_per_grabber && streams.size() < cameras; ++camera)
            streams.push_back(open(iface, number + std::to_string(camera), buffers, payload));
    }
}

BareSystem::~BareSystem()
{
    for (const OpenStream& open : streams) {
        gentl.DSStopAcquisition(open.stream, ACQ_STOP_FLAGS_DEFAULT);
        gentl.DSClose(open.stream);
    }
    gentl.TLClose(m_system);
}

OpenStream BareSystem::open(IF_HANDLE iface, const std::string& number, size_t buffers, uint64_t payload)
{
    DEV_HANDLE device = nullptr;
    OpenStream open{};
    check(gentl.IFOpenDevice(iface, ("Device" + number).c_str(), DEVICE_ACCESS_CONTROL, &device),
          "IFOpenDevice");
    check(gentl.DevOpenDataStream(device, ("Stream" + number + "0").c_str(), &open.stream),
          "DevOpenDataStream");
    check(gentl.GCRegisterEvent(open.stream, EVENT_NEW_BUFFER, &open.event), "GCRegisterEvent");
    for (size_t i = 0; i < buffers; ++i) {
        BUFFER_HANDLE buffer = nullptr;
        check(gentl.DSAllocAndAnnounceBuffer(open.stream, payload, nullptr, &buffer),
              "DSAllocAndAnnounceBuffer");
        check(gentl.DSQueueBuffer(open.stream, buffer), "DSQueueBuffer");
        open.buffers.push_back(buffer);
        open.library_handles.push_back(m_libraries.last_buffer());
    }
    check(gentl.DSStartAcquisition(open.stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
          "DSStartAcquisition");
    return open;
}

} // namespace zvbench
