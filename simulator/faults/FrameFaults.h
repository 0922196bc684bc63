#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "simulator/Pacer.h"
#include "simulator/faults/FaultPlan.h"

namespace zvsim {

class FaultEngine;

/// What happens to one frame; as it is made, nothing.
struct FrameFate {
    explicit FrameFate(const Frame& frame) : id{frame.id}, timestamp{frame.timestamp} {}

    /// As it is reported.
    uint64_t id;
    /// As it is reported.
    uint64_t timestamp;
    bool ends_acquisition{false};
    bool is_dropped{false};
    bool is_duplicated{false};
    /// Delivered behind the next frame.
    bool is_held{false};
    bool is_unreported{false};
    uint64_t drawn_bytes{std::numeric_limits<uint64_t>::max()};
    uint64_t damaged_bytes{0};
    /// Before it is drawn.
    std::chrono::microseconds late{0};
    /// Between drawing and report.
    std::chrono::microseconds stall{0};

    /// Notes what a fault of this frame alone does to it.
    void suffer(const FaultRule& rule);
    /// How much of a picture of this size is drawn.
    size_t drawn(uint64_t size) const { return static_cast<size_t>(size < drawn_bytes ? size : drawn_bytes); }
    /// Damages what was drawn; nothing beyond `size`.
    void damage(unsigned char* memory, uint64_t size) const;
};

/// A frame that waits for the next one to overtake it.
struct HeldFrame {
    Frame frame;
    FrameFate fate;
};

/// The faults of one acquisition. Made and asked with the library's lock held; allocates nothing.
class FrameFaults {
public:
    /// None at all.
    FrameFaults() = default;
    FrameFaults(FaultEngine& engine, uint32_t stream, const Place& place, bool is_silent);

    bool can_happen() const { return m_engine != nullptr; }
    /// The camera exposes nothing.
    bool is_silent() const { return m_is_silent; }
    FrameFate fate_of(const Frame& frame);

    std::optional<HeldFrame> held;

private:
    void suffer(const FaultRule& rule, const Frame& frame, FrameFate& fate);

    FaultEngine* m_engine{nullptr};
    uint32_t m_stream{0};
    Place m_place;
    bool m_is_silent{false};
    Clock::time_point m_start;
    uint64_t m_id_shift{0};
    uint64_t m_timestamp_shift{0};
};

} // namespace zvsim
