#include "simulator/CyclicStream.h"

#include <new>

#include "simulator/Library.h"

namespace zvsim {

namespace {

size_t frame_space_for(uint64_t payload)
{
    return static_cast<size_t>((payload + platform::RingMemory::page_size - 1) /
                               platform::RingMemory::page_size * platform::RingMemory::page_size);
}

size_t ring_size(size_t frame_space, uint32_t frames)
{
    if (frames > SIZE_MAX / frame_space)
        throw std::bad_alloc{};
    return frames * frame_space;
}

} // namespace

CyclicStream::CyclicStream(Library& library, uint32_t handle, uint32_t camera, CameraDevice& device,
                           uint32_t frames)
    : Stream{library, handle, camera, device}, m_frame_space{frame_space_for(payload())},
      m_frame_size{payload()}, m_ring{std::make_unique<platform::RingMemory>(
                                   ring_size(m_frame_space, frames))},
      m_timestamps(frames)
{
}

void CyclicStream::prepare()
{
    m_frame_size = device().payload();
    const size_t needed = frame_space_for(m_frame_size);
    if (needed <= m_frame_space)
        return;
    try {
        m_ring = std::make_unique<platform::RingMemory>(
            ring_size(needed, static_cast<uint32_t>(m_timestamps.size())));
        m_frame_space = needed;
    } catch (const std::bad_alloc&) {
        m_frame_size = m_frame_space;
    }
}

bool CyclicStream::deliver(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate)
{
    const uint32_t next = m_last + 1 < m_timestamps.size() ? m_last + 1 : 0; // the first one after none
    const Exposure exposure = exposure_of(frame);
    lock.unlock();
    auto* const target = static_cast<unsigned char*>(memory(next));
    acquisition.source->draw(exposure, target, fate.drawn(m_frame_size));
    fate.damage(target, m_frame_size);
    lock.lock();
    hold_up(lock, acquisition, fate.stall);
    if (!is_current(acquisition))
        return false;
    m_timestamps[next] = fate.timestamp;
    m_last = next;
    log_delivery(fate);
    if (fate.is_unreported)
        return true;
    const Camera* const owner = library().find_camera(camera());
    if (owner == nullptr || owner->callback == nullptr)
        return true;
    const auto callback = owner->callback;
    void* const context = owner->context;
    lock.unlock();
    callback(context, handle());
    if (acquisition.pacer.is_free_running())
        std::this_thread::yield(); // the thread that takes the frames needs the processor too
    lock.lock();
    return true;
}

} // namespace zvsim
