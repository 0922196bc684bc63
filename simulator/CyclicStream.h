#pragma once

#include <memory>
#include <vector>

#include "platform/RingMemory.h"
#include "simulator/Stream.h"

namespace zvsim {

/// A stream with its own ring. Each frame is drawn into the next ring frame and reported; while the
/// report runs nothing is drawn, so every ring frame stays intact.
class CyclicStream final : public Stream {
public:
    /// Throws std::bad_alloc.
    CyclicStream(Library& library, uint32_t handle, uint32_t camera, CameraDevice& device, uint32_t frames);

    /// The ring frame last filled, or 0xFFFFFFFF.
    uint32_t last_frame() const { return m_last; }
    bool has_frame(uint32_t frame) const { return frame < m_timestamps.size(); }
    void* memory(uint32_t frame) const { return m_ring->data() + frame * m_frame_space; }
    uint64_t timestamp(uint32_t frame) const { return m_timestamps[frame]; }

private:
    /// A ring that has become too small for the camera's settings is replaced by a larger one. Without memory
    /// for it frames are cut.
    void prepare() override;
    bool has_room() const override { return true; }
    bool deliver(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate) override;
    void report_end(Lock& /*lock*/) override {} // nobody waits for buffers

    /// From the beginning of one ring frame to that of the next.
    size_t m_frame_space;
    /// Bytes that are drawn of a frame.
    uint64_t m_frame_size;
    std::unique_ptr<platform::RingMemory> m_ring;
    /// One per ring frame.
    std::vector<uint64_t> m_timestamps;
    uint32_t m_last{UINT32_MAX};
};

} // namespace zvsim
