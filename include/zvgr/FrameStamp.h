/// \file FrameStamp.h
/// A frame counter and a checksum inside the pixels of a frame, so that a receiver can prove that what
/// arrived is what was sent, and see what did not arrive. The software grabber library stamps its test
/// patterns; tools and tests read the stamp from the delivered bytes, in any pixel format.
///
/// The stamp is the first 32 bytes of the frame, numbers little-endian:
///
/// | Offset | Size | Field                                                          |
/// |--------|------|----------------------------------------------------------------|
/// | 0      | 4    | the characters "ZVFS"                                          |
/// | 4      | 4    | layout version, 1                                              |
/// | 8      | 8    | frame counter                                                  |
/// | 16     | 8    | bytes of the whole frame, the stamp included                   |
/// | 24     | 8    | checksum of the counter and of all bytes that follow the stamp |
///
/// The stamp contains the frame's own size, so a receiver may pass a buffer that is larger than the frame. A
/// frame that was cut to fit a smaller buffer reads as damaged.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace zvgr {

/// Bytes that a stamp takes at the beginning of a frame.
constexpr std::size_t frame_stamp_size = 32;

/// What read_stamp() found.
struct FrameStamp {
    std::uint64_t counter;
    bool checksum_ok; ///< The counter and every other byte of the frame are as they were sent.
};

namespace detail {

constexpr std::uint32_t stamp_magic = 0x5346565A; // "ZVFS" in memory
constexpr std::uint32_t stamp_version = 1;

inline std::uint64_t mix(std::uint64_t state, std::uint64_t word) noexcept
{
    const std::uint64_t product = (state ^ word) * 0x9E3779B97F4A7C15U;
    return (product << 29U) | (product >> 35U);
}

/// Four independent lanes of 64-bit words keep the multiplier busy: several gigabytes per second. Every step
/// is a bijection of its lane, so a change within one word never goes unnoticed.
inline std::uint64_t checksum(const unsigned char* bytes, std::size_t size, std::uint64_t counter) noexcept
{
    constexpr std::size_t block_size = 32;
    std::array<std::uint64_t, 4> lanes{counter, counter + 1, counter + 2, counter + 3};
    std::array<std::uint64_t, 4> words{};
    const std::size_t whole = size - size % block_size;
    for (std::size_t at = 0; at < whole; at += block_size) {
        std::memcpy(words.data(), bytes + at, block_size);
        lanes[0] = mix(lanes[0], words[0]);
        lanes[1] = mix(lanes[1], words[1]);
        lanes[2] = mix(lanes[2], words[2]);
        lanes[3] = mix(lanes[3], words[3]);
    }
    words = {};
    std::memcpy(words.data(), bytes + whole, size - whole);
    std::uint64_t sum = size;
    for (std::size_t lane = 0; lane < lanes.size(); ++lane)
        sum = mix(sum, mix(lanes[lane], words[lane]));
    return sum;
}

struct StampFields {
    std::uint32_t magic;
    std::uint32_t version;
    std::uint64_t counter;
    std::uint64_t frame_size;
    std::uint64_t checksum;
};
static_assert(sizeof(StampFields) == frame_stamp_size, "the stamp is shared between programs");

} // namespace detail

/// Stamps a finished frame of `size` bytes; false, and nothing is written, when it is too small for a stamp.
inline bool write_stamp(void* frame, std::size_t size, std::uint64_t counter) noexcept
{
    if (frame == nullptr || size < frame_stamp_size)
        return false;
    auto* const bytes = static_cast<unsigned char*>(frame);
    const detail::StampFields stamp{
        detail::stamp_magic, detail::stamp_version, counter, size,
        detail::checksum(bytes + frame_stamp_size, size - frame_stamp_size, counter)};
    std::memcpy(bytes, &stamp, frame_stamp_size);
    return true;
}

/// Stamps a frame of `frame_size` bytes of which only the first `size` found room: the counter can be read,
/// and the checksum never fits.
inline bool write_stamp_of_cut_frame(void* frame, std::size_t size, std::uint64_t frame_size,
                                     std::uint64_t counter) noexcept
{
    if (frame == nullptr || size < frame_stamp_size)
        return false;
    const detail::StampFields stamp{detail::stamp_magic, detail::stamp_version, counter, frame_size, 0};
    std::memcpy(frame, &stamp, frame_stamp_size);
    return true;
}

/// Reads and verifies the stamp of a frame that begins at `frame`, in a buffer of `size` bytes; empty when
/// the buffer does not begin with a stamp.
inline std::optional<FrameStamp> read_stamp(const void* frame, std::size_t size) noexcept
{
    if (frame == nullptr || size < frame_stamp_size)
        return std::nullopt;
    const auto* const bytes = static_cast<const unsigned char*>(frame);
    detail::StampFields stamp{};
    std::memcpy(&stamp, bytes, frame_stamp_size);
    if (stamp.magic != detail::stamp_magic || stamp.version != detail::stamp_version)
        return std::nullopt;
    if (stamp.frame_size < frame_stamp_size || stamp.frame_size > size)
        return FrameStamp{stamp.counter, false};
    const auto pixels = static_cast<std::size_t>(stamp.frame_size) - frame_stamp_size;
    return FrameStamp{stamp.counter,
                      detail::checksum(bytes + frame_stamp_size, pixels, stamp.counter) == stamp.checksum};
}

} // namespace zvgr
