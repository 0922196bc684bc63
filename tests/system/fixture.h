#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "support/process/process_state.h"
#include "system/consumer/Camera.h"
#include "system/consumer/Library.h"
#include "system/consumer/Surroundings.h"

namespace zvsystem {

using namespace zvtest;

/// The built producer.
constexpr const char* producer_file = ZV_PRODUCER_FILE;

/// What all cameras send unless a test wants something else: small frames, so that little time goes into
/// drawing and checking them.
constexpr const char* usual_frame_size = "160x120";

/// The process's one private folder, settings and variables.
Surroundings& surroundings();
/// The same, for streams of this mode.
Surroundings& surroundings_in(Mode mode);

/// Waits until the condition holds, for what another thread or the system does without a notice; false if it
/// took longer than any machine needs.
bool eventually(const std::function<bool()>& condition);

/// What the file contains; empty if it cannot be read.
std::string contents(const std::filesystem::path& file);

inline std::ostream& operator<<(std::ostream& out, Mode mode)
{
    return out << (mode == Mode::queued ? "Queued" : "Cyclic");
}

inline const auto both_modes = testing::Values(Mode::queued, Mode::cyclic);

/// The stamp in the pixels of a filled buffer; nothing if there is none.
std::optional<zvgr::FrameStamp> stamp_of(const Camera& camera, GenTL::BUFFER_HANDLE buffer);

/// Grabbers from a file of the test's own while the object lives, with the frame sizes that it gives. The
/// system must have been closed, or be closed next.
class GrabberFile {
public:
    explicit GrabberFile(const std::string& yaml);
    ~GrabberFile();
    GrabberFile(const GrabberFile&) = delete;
    GrabberFile& operator=(const GrabberFile&) = delete;
};

/// Verifies the frames of one acquisition: each intact, each newer than the one before.
class FrameCheck {
public:
    explicit FrameCheck(const Camera& camera) : m_camera(camera) {}

    /// Fails the running test for a frame that is not what the camera sent.
    void expect_good(const Filled& filled);
    /// Fails it also if the frame is not the very next one.
    void expect_next(const Filled& filled);
    /// Receives, verifies and queues again.
    void stream(uint64_t frames);

private:
    const Camera& m_camera;
    uint64_t m_frames{0};
    std::optional<uint64_t> m_last;
};

/// A producer that was loaded for this test, with an open system.
class LoadedProducer : public testing::Test {
protected:
    explicit LoadedProducer(Mode mode = Mode::queued) : m_surroundings(surroundings_in(mode)) {}

    Surroundings& m_surroundings; // before the producer looks for its settings
    Producer producer{producer_file};
    const Functions& gentl{producer.functions()};
    std::optional<System> system{std::in_place, gentl};
};

/// The same for both modes.
class InBothModes : public LoadedProducer, public testing::WithParamInterface<Mode> {
protected:
    InBothModes() : LoadedProducer(GetParam()) {}
};

/// With an open camera and a few buffers that are not queued.
class OneCamera : public InBothModes {
protected:
    static constexpr size_t buffers = 8;

    OneCamera() { camera.announce(buffers); }

    const GenTL::IF_HANDLE iface{system->open_interface("FG0")};
    Camera camera{gentl, iface, "Device00"};
};

} // namespace zvsystem
