#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "unit/simulator/fixtures.h"

// What the tests of faults begin with: a configuration file and a grabber library that has read it.

namespace zvsim_test {

/// Two grabbers with two cameras and one with one, all small and free-running; the demo grabber is missing.
/// A test says what goes wrong, and opens what it needs.
class Faulty : public testing::Test {
protected:
    static constexpr uint32_t success = zv_success;
    static constexpr uint64_t frame_size = 64 * 48;

    Faulty() { std::filesystem::create_directories(m_folder); }
    ~Faulty() override
    {
        close_all();
        unsetenv("ZV_GRABBER_CONFIG");
        uint32_t count = 0;
        ZV_DeviceScan(&count); // forgets the faults and closes the call log
        std::filesystem::remove_all(m_folder);
    }

    /// Has the next scan read a file with these lines. Each one counts its calls and frames anew, also when
    /// its lines are those of the one before.
    void plan(const std::string& lines)
    {
        static int runs = 0;
        const auto file = m_folder / "faults.yaml";
        std::ofstream{file} << "# " << ++runs << "\n" << grabbers << lines << "\n";
        setenv("ZV_GRABBER_CONFIG", file.string().c_str(), 1);
    }
    /// One fault, as in "kind: scan-fails".
    void fault(const std::string& text) { plan("faults: [{" + text + "}]"); }

    static uint32_t scan()
    {
        uint32_t count = 0xAAAA;
        EXPECT_EQ(success, ZV_DeviceScan(&count));
        return count;
    }
    uint32_t open_grabber(uint32_t index = 0)
    {
        const uint32_t grabber = ZVGR_Open(index);
        EXPECT_NE(ZV_NO_HANDLE, grabber);
        m_grabbers.push_back(grabber);
        return grabber;
    }
    static std::vector<uint32_t> cameras_of(uint32_t grabber)
    {
        std::vector<uint32_t> cameras(zv_max_cameras);
        uint32_t count = zv_max_cameras;
        EXPECT_EQ(success, ZVGR_UpdateCameraList(grabber, cameras.data(), &count));
        cameras.resize(count);
        return cameras;
    }
    /// The first camera of a grabber that is opened for it.
    uint32_t open_camera(uint32_t index = 0)
    {
        scan();
        const uint32_t camera = cameras_of(open_grabber(index)).front();
        EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        return camera;
    }
    static uint32_t create_stream(uint32_t camera)
    {
        uint32_t stream = ZV_NO_HANDLE;
        EXPECT_EQ(success, ZVGR_StreamCreate(camera, &stream, 0));
        return stream;
    }
    static uint64_t announce(uint32_t stream)
    {
        uint64_t buffer = 0;
        EXPECT_EQ(success, ZVGR_BufferAllocAndAnnounce(stream, frame_size, nullptr, &buffer));
        return buffer;
    }
    void close_all()
    {
        for (const uint32_t grabber : m_grabbers)
            ZVGR_Close(grabber);
        m_grabbers.clear();
    }

    const std::filesystem::path& folder() const { return m_folder; }
    static std::string text_of(const std::filesystem::path& file)
    {
        std::stringstream text;
        text << std::ifstream{file}.rdbuf();
        return text.str();
    }

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

    std::filesystem::path m_folder{std::filesystem::temp_directory_path() /
                                   ("zvsim_faults_" + std::to_string(getpid()))};
    std::vector<uint32_t> m_grabbers;
};

/// One acquisition of a camera in queued mode, with all that it needs. Frames are noted in the callback.
class Acquired {
public:
    struct Report {
        uint64_t buffer;
        uint64_t id;
        uint64_t timestamp;
    };

    Acquired(uint32_t camera, size_t buffers) : m_camera{camera}
    {
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamCreate(camera, &m_stream, 0));
        receiver.on_buffer = [this](uint64_t buffer) { note(buffer); };
        EXPECT_EQ(uint32_t{zv_success},
                  ZVGR_StreamBufferCallbackRegister(m_stream, &Receiver::buffer_callback, &receiver));
        for (size_t i = 0; i < buffers; ++i) {
            uint64_t buffer = 0;
            EXPECT_EQ(uint32_t{zv_success}, ZVGR_BufferAllocAndAnnounce(m_stream, 64 * 48, nullptr, &buffer));
            EXPECT_EQ(uint32_t{zv_success}, ZVGR_BufferToQueue(buffer, zv_queue_input));
            m_buffers.push_back(buffer);
        }
    }
    Acquired(const Acquired&) = delete;
    Acquired& operator=(const Acquired&) = delete;
    ~Acquired()
    {
        ZVGR_StreamDelete(m_stream);
        receiver.expect_silence();
    }

    uint32_t start(uint32_t frames = 0) const
    {
        return ZVGR_CameraStartAcquire_GenTL(m_camera, m_stream, frames);
    }
    uint32_t stop() const { return ZVGR_CameraStopAcquire_GenTL(m_camera); }
    /// Waits for so many callbacks, the end's included, and stops.
    void run(uint64_t callbacks, uint32_t frames = 0)
    {
        EXPECT_EQ(uint32_t{zv_success}, start(frames));
        EXPECT_TRUE(receiver.wait_for(callbacks));
        EXPECT_EQ(uint32_t{zv_success}, stop());
    }

    std::vector<uint64_t> ids() const
    {
        std::vector<uint64_t> ids;
        for (const Report& report : reports)
            ids.push_back(report.id);
        return ids;
    }
    const unsigned char* memory(size_t report) const
    {
        return reinterpret_cast<const unsigned char*>(buffer_info(reports[report].buffer, zv_buffer_address));
    }

    uint32_t stream() const { return m_stream; }
    const std::vector<uint64_t>& buffers() const { return m_buffers; }

    Receiver receiver;
    /// Only between a stop and the next start.
    std::vector<Report> reports;

private:
    void note(uint64_t buffer)
    {
        if (buffer == 0)
            return;
        Report report{buffer, 0, 0};
        ZVGR_BufferGetInfo(buffer, zv_buffer_frame_id, &report.id);
        ZVGR_BufferGetInfo(buffer, zv_buffer_timestamp, &report.timestamp);
        reports.push_back(report);
    }

    uint32_t m_camera;
    uint32_t m_stream{ZV_NO_HANDLE};
    std::vector<uint64_t> m_buffers;
};

} // namespace zvsim_test
