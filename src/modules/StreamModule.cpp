#include "modules/StreamModule.h"

#include <tuple>
#include <utility>

#include "log/Log.h"
#include "modules/CameraModule.h"
#include "modules/InterfaceModule.h"
#include "modules/grabber_info.h"
#include "modules/handles.h"
#include "modules/settings.h"

// The stream itself: its life and what it asks the library.

namespace zvgentl {

namespace {

/// The library need not be able to handle an exception from a callback, so none may leave one.
template <class Delivery>
void deliver_from_library(Delivery delivery) noexcept
{
    try {
        delivery();
    } catch (...) {
        log_error(stream_module_logger, "StreamModule::deliver_from_library", At{110},
                  "A frame was lost: its delivery ran out of memory or failed in the runtime");
    }
}

void ZVGR_CALL cyclic_trampoline(void* context, uint32_t stream_handle)
{
    deliver_from_library([&] { static_cast<StreamModule*>(context)->buffer_callback(stream_handle); });
}

void ZVGR_CALL queued_trampoline(uint64_t buffer_handle, void* context)
{
    deliver_from_library([&] { static_cast<StreamModule*>(context)->stream_buffer_callback(buffer_handle); });
}

} // namespace

const char* name_of(StreamMode mode) noexcept { return mode == StreamMode::queued ? "Queued" : "Cyclic"; }

// Members are initialised in the order of their declaration, which is the order in which the settings are
// read.
StreamModule::StreamModule(CameraModule* camera, std::string id)
    : m_id(std::move(id)), m_camera(camera), m_payload_size_type(read(settings::stream_payload_size_type)),
      m_buffer_alloc_min(read(settings::buffer_alloc_min)),
      m_signaled_event_mode(read(settings::signaled_event_mode) != 0)
{
    stream_index.add(this, this);
}

StreamModule::~StreamModule()
{
    close();
    stream_index.remove(this);
}

void StreamModule::connect(uint32_t stream_handle, StreamMode mode)
{
    m_mode.store(mode, std::memory_order_relaxed);
    m_pool.open();
    m_events.open();
    m_stream_handle.store(stream_handle, std::memory_order_relaxed);
    log_information(stream_module_logger, "StreamModule::connect", At{140},
                    "Connect callback for stream=0x%x, type=%s", stream_handle, name_of(mode));
    m_image_id_supported.store(0, std::memory_order_relaxed);
    if (m_camera != nullptr) {
        const uint32_t grabber = m_camera->get_Parent()->get_GrabberHandle();
        const int64_t supported = ZVGR_GetGrabberValueInt(grabber, "FW_Dma_Capable_FrameImageId_Imp");
        m_image_id_supported.store(supported, std::memory_order_relaxed);
        log_information(stream_module_logger, "StreamModule::connect", At{146},
                        "Is ZV_STREAM_BUFFER_INFO_IMAGEID supported for grabber 0x%X: %lld", grabber,
                        static_cast<long long>(supported));
    }

    if (mode == StreamMode::cyclic &&
        (m_camera == nullptr ||
         !succeeded(ZVGR_CameraCallbackRegister(m_camera->get_CameraHandle(), cyclic_trampoline, this)))) {
        log_warning(stream_module_logger, "StreamModule::connect", At{153},
                    "ZVGR_CameraCallbackRegister failed");
        return;
    }
    if (mode == StreamMode::queued &&
        !succeeded(ZVGR_StreamBufferCallbackRegister(stream_handle, queued_trampoline, this))) {
        log_warning(stream_module_logger, "StreamModule::connect", At{158},
                    "ZVGR_StreamBufferCallbackRegister failed");
        return;
    }
    log_information(stream_module_logger, "StreamModule::connect", At{162},
                    "Successful callback connect for stream=0x%x", stream_handle);
}

void StreamModule::close()
{
    m_events.close();
    m_pool.close();
    m_AcquisitionFlag.store(false, std::memory_order_relaxed);
    if (!is_Open())
        return;
    // Deleting the stream also ends its acquisition and forgets its buffers; there is nothing to do about a
    // failure.
    std::ignore = ZVGR_StreamDelete(get_Handle());
    m_stream_handle.store(ZV_NO_HANDLE, std::memory_order_relaxed);
}

uint64_t StreamModule::get_PayloadSize() const
{
    const uint32_t command = m_payload_size_type == 1 ? zv_stream_payload_at_creation : zv_stream_payload_now;
    uint64_t size = 0;
    std::ignore = ZVGR_StreamGetInfo(get_Handle(), command, &size); // a failure reads as 0
    return size;
}

uint64_t StreamModule::get_Alignment() const
{
    constexpr uint64_t default_alignment = 16;
    uint64_t alignment = 0;
    return succeeded(ZVGR_StreamGetInfo(get_Handle(), zv_stream_buffer_alignment, &alignment))
               ? alignment
               : default_alignment;
}

bool StreamModule::is_Grabbing() const
{
    return ZVGR_GetGrabberValueEnum(m_camera->get_CameraHandle(), "CameraChannelState") ==
           zv_channel_grabbing;
}

} // namespace zvgentl
