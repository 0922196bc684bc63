#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "gentl/Stream.h"
#include "zvgentl/FrameCount.h"
#include "zvgentl/GrabOptions.h"
#include "zvgentl/OutputFile.h"
#include "zvgentl/PictureSaver.h"

namespace zvgentl::tool {

/// What the header of a raw frame states: everything that is needed to take the bytes behind it apart.
struct RawHeader {
    std::uint64_t number{0}; // of the frame among those that are saved
    Frame frame;
    std::uint64_t timestamp_frequency{0}; // ticks per second; 0 when not known
};

/// Where the frames of a grab go: pictures or raw frames, and a table. Called from one thread.
class FrameSink {
public:
    /// Throws std::runtime_error when the folder holds frames of an earlier run and the options do not say
    /// what shall become of them. Changes nothing yet but that it makes the folder.
    explicit FrameSink(const GrabOptions& options);

    /// Call before the first frame: removes frames of an earlier run, where asked to.
    void begin(std::uint64_t timestamp_frequency);
    /// Takes what is needed of a frame, whose buffer may then be queued again.
    void take(const Frame& frame, FrameState state);
    /// Hands over what the last take() took; may wait for the disk.
    void pass_on();
    /// Returns when everything is written. Throws what a write failed with.
    void finish();
    /// Frames that are saved up to now.
    std::uint64_t saved() const;

private:
    using Clock = std::chrono::steady_clock;

    void save_raw(const Frame& frame);
    void add_line(const Frame& frame, FrameState state);

    const GrabOptions& m_options;
    std::filesystem::path m_folder; // of a file for each frame
    std::uint64_t m_first_number{0};
    std::uint64_t m_taken{0};
    std::uint64_t m_saved_raw{0};
    std::uint64_t m_timestamp_frequency{0};
    Clock::time_point m_begin;
    std::unique_ptr<OutputFile> m_raw_file;
    std::unique_ptr<OutputFile> m_table;
    std::unique_ptr<PictureSaver> m_pictures;
    std::optional<Picture> m_picture;
};

} // namespace zvgentl::tool
