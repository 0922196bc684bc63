#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "system/consumer/Camera.h"
#include "system/consumer/Library.h"
#include "system/consumer/Surroundings.h"
#include "system/process_state.h"

namespace zvsystem {

/// The built producer.
constexpr const char* producer_file = ZV_PRODUCER_FILE;

/// The process's one private folder, settings and variables.
Surroundings& surroundings();

/// Waits until the condition holds. For what another thread or the system brings about without telling; false
/// when it took longer than any machine needs.
bool eventually(const std::function<bool()>& condition);

inline std::ostream& operator<<(std::ostream& out, Mode mode)
{
    return out << (mode == Mode::queued ? "Queued" : "Cyclic");
}

inline std::ostream& operator<<(std::ostream& out, Memory memory)
{
    return out << (memory == Memory::of_consumer ? "OwnMemory" : "ProducerMemory");
}

/// The stamp in the pixels of a filled buffer, checked; nothing when there is none.
std::optional<zvgr::FrameStamp> stamp_of(const Camera& camera, GenTL::BUFFER_HANDLE buffer);

/// Frames per second of every camera while the object lives; for the grabbers that are opened meanwhile. The
/// system must have been closed, or be closed next.
class FrameRate {
public:
    explicit FrameRate(const std::string& rate) { Surroundings::set_frame_rate(rate); }
    ~FrameRate() { Surroundings::set_frame_rate("0"); }
    FrameRate(const FrameRate&) = delete;
    FrameRate& operator=(const FrameRate&) = delete;
};

/// Verifies the frames of one acquisition: each whole, each newer than the one before.
class FrameCheck {
public:
    explicit FrameCheck(const Camera& camera) : m_camera(camera) {}

    /// Fails the running test for a frame that is not what the camera sent.
    void expect_good(const Filled& filled);
    /// Fails it also when the frame is not the very next one.
    void expect_next(const Filled& filled);

    uint64_t frames() const noexcept { return m_frames; }

private:
    const Camera& m_camera;
    std::optional<uint64_t> m_last;
    uint64_t m_frames{0};
};

/// Receives, verifies and queues again.
void stream(const Camera& camera, FrameCheck& check, uint64_t frames);

/// A producer that was loaded for this test, with an open system.
class LoadedProducer : public testing::Test {
protected:
    Surroundings& m_surroundings{surroundings()}; // before the producer looks for its settings
    Producer producer{producer_file};
    const Functions& gentl{producer.functions()};
    std::optional<System> system{std::in_place, gentl};
};

/// The same for both modes.
class InBothModes : public testing::TestWithParam<Mode> {
protected:
    static Surroundings& in_mode(Mode mode);

    Surroundings& m_surroundings{in_mode(GetParam())};
    Producer producer{producer_file};
    const Functions& gentl{producer.functions()};
    std::optional<System> system{std::in_place, gentl};
};

inline const auto both_modes = testing::Values(Mode::queued, Mode::cyclic);

} // namespace zvsystem
