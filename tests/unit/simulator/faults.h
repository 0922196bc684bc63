#pragma once

#include "unit/simulator/fixtures.h"

// What the tests of faults begin with: a configuration file and a grabber library that has read it.

namespace zvsim_test {

/// Two grabbers with two cameras and one with one, all small and free-running; the demo grabber is missing.
/// A test says what goes wrong, and opens what it needs.
class Faulty : public testing::Test {
protected:
    ~Faulty() override { close_all(); }

    /// Has the next scan read a file with these lines. Each one starts to count calls and frames, also when
    /// its lines are those of the one before.
    void plan(const std::string& lines) const
    {
        static int runs = 0;
        m_file.write("# " + std::to_string(++runs) + "\n" + grabbers + lines + "\n");
    }
    /// One fault, as in "kind: scan-fails".
    void fault(const std::string& text) const { plan("faults: [{" + text + "}]"); }

    uint32_t open_grabber(uint32_t index = 0)
    {
        const uint32_t grabber = ZVGR_Open(index);
        EXPECT_NE(ZV_NO_HANDLE, grabber);
        m_grabbers.push_back(grabber);
        return grabber;
    }
    /// Scans, and opens the first camera of a grabber.
    uint32_t open_camera(uint32_t index = 0)
    {
        scan();
        const uint32_t camera = cameras_of(open_grabber(index)).at(0);
        EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        return camera;
    }
    /// The first camera of the first grabber, with one fault.
    uint32_t open_camera_with(const std::string& its_fault)
    {
        fault(its_fault);
        return open_camera();
    }
    void close_all()
    {
        for (const uint32_t grabber : m_grabbers)
            ZVGR_Close(grabber);
        m_grabbers.clear();
    }

    const Folder& folder() const { return m_file.folder; }

private:
    static constexpr const char* grabbers = R"(demo_grabber: false
grabbers:
- name: Two
  cameras: [&camera {count: 2, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}]
- name: One
  protocol: CameraLinkHS
  cameras: [{sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}]
- name: Also two
  cameras: [*camera]
)";

    ConfigurationFile m_file;
    std::vector<uint32_t> m_grabbers;
};

/// One acquisition of a camera in queued mode, with all that it needs. Frames are noted in the callback.
class Acquired {
public:
    Acquired(uint32_t camera, size_t count) : m_camera{camera}
    {
        receiver.on_call = [this](uint64_t buffer) {
            if (buffer == 0)
                return;
            ZVGR_BufferGetInfo(buffer, zv_buffer_frame_id, &ids.emplace_back()); // a fault can make it fail
            ZVGR_BufferGetInfo(buffer, zv_buffer_timestamp, &timestamps.emplace_back());
        };
        for (size_t i = 0; i < count; ++i) {
            EXPECT_EQ(success,
                      ZVGR_BufferAllocAndAnnounce(stream, frame_size, nullptr, &buffers.emplace_back()));
            EXPECT_EQ(success, ZVGR_BufferToQueue(buffers.back(), zv_queue_input));
        }
    }
    Acquired(const Acquired&) = delete;
    Acquired& operator=(const Acquired&) = delete;
    ~Acquired()
    {
        ZVGR_StreamDelete(stream);
        receiver.expect_silence();
    }

    uint32_t start(uint32_t frames = 0) const
    {
        return ZVGR_CameraStartAcquire_GenTL(m_camera, stream, frames);
    }
    uint32_t stop() const { return ZVGR_CameraStopAcquire_GenTL(m_camera); }
    /// Waits for so many callbacks, the end's included, and stops.
    void run(uint64_t callbacks, uint32_t frames = 0)
    {
        EXPECT_EQ(success, start(frames));
        EXPECT_TRUE(receiver.wait_for(callbacks));
        EXPECT_EQ(success, stop());
    }

private:
    uint32_t m_camera;

public:
    Receiver receiver;
    uint32_t stream{create_stream(m_camera, Mode::queued, &receiver)};
    std::vector<uint64_t> buffers;
    /// Of all frames. Only between a stop and the next start.
    std::vector<uint64_t> ids;
    std::vector<uint64_t> timestamps;
};

} // namespace zvsim_test
