#include "modules/StreamModule.h"

#include <mutex>
#include <tuple>
#include <utility>

#include "log/Log.h"
#include "modules/CameraModule.h"
#include "modules/grabber_info.h"

// The stream's frames: starting and stopping the acquisition, and the way of a frame from the library to the
// event.

namespace zvgentl {

namespace {

/// A value that the library does not set reads as 0.
uint64_t buffer_value(uint64_t buffer_handle, uint32_t command)
{
    uint64_t value = 0;
    std::ignore = ZVGR_BufferGetInfo(buffer_handle, command, &value);
    return value;
}

} // namespace

bool StreamModule::start(uint32_t frames)
{
    if (!succeeded(ZVGR_CameraStartAcquire_GenTL(m_camera->get_CameraHandle(), get_Handle(), frames)))
        return false;
    m_AcquisitionFlag.store(true, std::memory_order_relaxed);
    reset_counts();
    return true;
}

void StreamModule::reset_counts()
{
    const ShortLock::Held held{m_lock};
    m_StreamDeliveredBuffers.store(0, std::memory_order_relaxed);
    m_underruns.exchange(0, std::memory_order_relaxed);
}

void StreamModule::stop()
{
    m_AcquisitionFlag.store(false, std::memory_order_relaxed);
    // Contract: the counts read 0 after a stop. Pinned by DSStopAcquisition.ResetsTheCounters.
    reset_counts();
    // Nothing can be done about a camera that does not stop; stopping twice is not an error.
    std::ignore = ZVGR_CameraStopAcquire_GenTL(m_camera->get_CameraHandle());
    // Frames may have been counted meanwhile: delivered, or missed because the flag was down. None is under
    // way any more.
    reset_counts();
}

void StreamModule::buffer_callback(uint32_t stream_handle)
{
    if (!is_Acquiring()) {
        m_underruns.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    const std::lock_guard lock(m_mutex);
    PinnedBuffer buffer = m_pool.take_first_input();
    if (!buffer)
        return;

    const uint32_t frame = ZVGR_StreamGetFrameIndex(stream_handle);
    const void* const source = ZVGR_StreamGetPtr(stream_handle, frame);
    log_trace(stream_module_logger, "StreamModule::buffer_callback", At{410},
              "curr_BuffIndex=%d, src_BuffPtr=%016llX, curr_BuffPtr=%016llX, curr_BuffSize=%zu",
              static_cast<int>(frame), address(source), address(buffer->get_Memory()),
              static_cast<size_t>(buffer->get_Size()));
    m_pool.set_fill_state(*buffer, FillState::filling);
    // Contract: the announced size is copied, not the frame's, as far as the library keeps the memory beyond
    // a ring frame readable. Pinned by CyclicDelivery.CopiesTheAnnouncedSize.
    if (source != nullptr)
        buffer->copy_from(source);
    ZvFrameAux record{};
    std::ignore = ZVGR_StreamGetAux(stream_handle, frame, &record); // a failure leaves timestamp 0
    const auto frame_id = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(frame)));
    buffer.set_Frame(record.timestamp, frame_id);
    deliver(std::move(buffer));
}

void StreamModule::stream_buffer_callback(uint64_t buffer_handle)
{
    const auto handle = static_cast<unsigned long long>(buffer_handle);
    log_trace(stream_module_logger, "StreamModule::stream_buffer_callback", At{430},
              "stream callback for handle 0x%llx, m_AcquisitionFlag=%s, m_StreamDeliveredBuffers=%lld",
              handle, is_Acquiring() ? "true" : "false", static_cast<long long>(get_Delivered()));
    if (!is_Acquiring())
        return;
    PinnedBuffer buffer = m_pool.take_library_handle(buffer_handle);
    if (!buffer) {
        if (buffer_handle == 0) // the library ended the acquisition by itself
            m_AcquisitionFlag.store(false, std::memory_order_relaxed);
        else
            log_warning(stream_module_logger, "StreamModule::stream_buffer_callback", At{441},
                        "stream handle 0x%llx wasn't found in m_StreamBufferMap", handle);
        return;
    }

    const uint64_t timestamp = buffer_value(buffer_handle, zv_buffer_timestamp);
    if (m_image_id_supported.load(std::memory_order_relaxed) == 1) {
        const uint64_t image_id = buffer_value(buffer_handle, zv_buffer_image_id);
        buffer.set_Frame(timestamp, image_id);
        log_trace(stream_module_logger, "StreamModule::stream_buffer_callback", At{453},
                  "New buffer handle 0x%llx with ImageId %llu", handle,
                  static_cast<unsigned long long>(image_id));
    } else {
        const uint64_t frame_id = buffer_value(buffer_handle, zv_buffer_frame_id);
        buffer.set_Frame(timestamp, frame_id);
        log_trace(stream_module_logger, "StreamModule::stream_buffer_callback", At{458},
                  "New buffer handle 0x%llx with FrameId %u", handle, static_cast<unsigned>(frame_id));
    }
    if (is_logged(stream_module_logger, Priority::trace)) {
        if (const EventRef event = m_events.find(GenTL::EVENT_NEW_BUFFER))
            log_trace(stream_module_logger, "StreamModule::stream_buffer_callback", At{463},
                      "add buffer handle 0x%llx to event %016llX", handle, address(event.get()));
    }
    deliver(std::move(buffer));
}

/// Publishes a frame that is complete, in one step: a consumer that takes it finds its state and the count.
inline void StreamModule::deliver(PinnedBuffer&& buffer)
{
    const BufferQueue::Entry entry{buffer.get(), &buffer.facts()};
    auto released = [&] {
        const ShortLock::Held held{m_lock};
        m_StreamDeliveredBuffers.store(get_Delivered() + 1, std::memory_order_relaxed);
        m_pool.complete(held, std::move(buffer));
        return m_events.deliver(held, entry);
    }();
    released.release();
}

} // namespace zvgentl
