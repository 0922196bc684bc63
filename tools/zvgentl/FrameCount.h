#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "gentl/Stream.h"
#include "zvgentl/GrabOptions.h"

namespace zvgentl::tool {

/// Follows numbers that should rise by one and counts those that are missing, late or repeated.
class Sequence {
public:
    void add(std::uint64_t number);

    /// Numbers between the first and the highest one that never came.
    std::uint64_t missing() const noexcept { return m_missing; }
    /// Numbers that came after a higher one.
    std::uint64_t late() const noexcept { return m_late; }
    /// Numbers that came again, or below the first one.
    std::uint64_t repeated() const noexcept { return m_repeated; }

private:
    void add_late(std::uint64_t number);

    bool m_started{false};
    std::uint64_t m_next{0};
    std::uint64_t m_missing{0};
    std::uint64_t m_late{0};
    std::uint64_t m_repeated{0};
    std::map<std::uint64_t, std::uint64_t> m_gaps; // start and end (behind the last) of what is missing
};

/// Where the number of lost frames is read from.
enum class LossSource { unknown, frame_ids, frame_counter };

/// What is known about the pixels of a frame.
enum class FrameState { not_checked, intact, damaged };

/// Counts delivered, lost and damaged frames of one grab.
class FrameCount {
public:
    enum class Stamps { ignored, checked };

    FrameCount(StreamMode mode, Stamps stamps) : m_mode(mode), m_stamps(stamps) {}

    /// Reads the frame's id and, when asked to, the counter and checksum in its pixels.
    FrameState add(const Frame& frame);

    std::uint64_t delivered() const noexcept { return m_delivered; }
    LossSource loss_source() const noexcept;
    /// Nothing when neither ids nor counters show it.
    std::optional<std::uint64_t> lost() const noexcept;
    std::uint64_t late() const noexcept;
    std::uint64_t repeated() const noexcept;

    bool stamps_checked() const noexcept { return m_stamps == Stamps::checked; }
    /// Frames with a counter and checksum in their pixels.
    std::uint64_t stamped() const noexcept { return m_stamped; }
    /// Frames that the producer calls incomplete.
    std::uint64_t incomplete() const noexcept { return m_incomplete; }
    /// These, frames whose checksum is wrong, and frames without one from a camera that writes them.
    std::uint64_t damaged() const noexcept;

private:
    const Sequence* sequence() const noexcept;

    StreamMode m_mode;
    Stamps m_stamps;
    std::uint64_t m_delivered{0};
    std::uint64_t m_highest_id{0};
    std::uint64_t m_incomplete{0};
    std::uint64_t m_stamped{0};
    std::uint64_t m_wrong_checksums{0};
    Sequence m_ids;
    Sequence m_counters;
};

} // namespace zvgentl::tool
