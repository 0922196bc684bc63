#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/ZVGRLib.h"

#include "unit/simulator/picture_files.h"

// Situations in which the tests of the software grabber library begin. They use its C interface only.

namespace zvsim_test {

inline constexpr uint32_t success = zv_success;
/// The size of a picture of most cameras of the tests: 64 x 48 pixels of 8 bits.
inline constexpr size_t frame_size = size_t{64} * 48;
inline constexpr uint32_t ring_frames = 4;

/// How long a test waits for something that must happen: far longer than any delay of a machine.
constexpr std::chrono::seconds patience{120};

/// Waits until a condition holds, and lets other threads run meanwhile.
template <class Condition>
bool becomes_true(const Condition& condition)
{
    const auto give_up = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > give_up)
            return false;
        std::this_thread::yield();
    }
    return true;
}

/// Something that one thread waits for and another one makes true.
class Gate {
public:
    void open()
    {
        const std::lock_guard lock{m_mutex};
        m_is_open = true;
        m_changed.notify_all();
    }
    bool wait()
    {
        std::unique_lock lock{m_mutex};
        return m_changed.wait_for(lock, patience, [this] { return m_is_open; });
    }
    /// Gives what must not open the gate a chance to do so. A slow mistake goes unnoticed.
    bool stays_closed()
    {
        std::unique_lock lock{m_mutex};
        return !m_changed.wait_for(lock, std::chrono::milliseconds{10}, [this] { return m_is_open; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_is_open{false};
};

/// A configuration file for the length of a test. Cameras keep their settings while the library is loaded;
/// each new file gives them back those of power-on.
class ConfigurationFile {
public:
    ConfigurationFile() = default;
    explicit ConfigurationFile(const std::string& text) { write(text); }

    void write(const std::string& text) const { folder.write("grabbers.yaml", text); }
    std::filesystem::path path() const { return folder.file("grabbers.yaml"); }

    Folder folder;

private:
    Variable m_variable{"ZV_GRABBER_CONFIG", path().string()};
};

/// Receives the callbacks of one stream, of either kind. What it notes is deliberately not guarded: the
/// library promises no access after a stop, and ThreadSanitizer checks the promise.
class Receiver {
public:
    Receiver() { reported.reserve(1000); } // callbacks of frames are expected to allocate nothing

    /// Is called with the buffer, 0 for an end, or with the stream in cyclic mode.
    std::function<void(uint64_t reported)> on_call;
    /// What all calls were about. Only between a stop and the next start.
    std::vector<uint64_t> reported;

    static void buffer_callback(uint64_t buffer, void* context)
    {
        static_cast<Receiver*>(context)->receive(buffer);
    }
    static void frame_callback(void* context, uint32_t stream)
    {
        static_cast<Receiver*>(context)->receive(stream);
    }

    /// Waits until this many callbacks of frames and ends have returned.
    bool wait_for(uint64_t calls)
    {
        std::unique_lock lock{m_mutex};
        return m_changed.wait_for(lock, patience, [&] { return m_calls >= calls; });
    }
    /// Waits until this many callbacks of ends have returned.
    bool wait_for_end(uint64_t ends = 1)
    {
        std::unique_lock lock{m_mutex};
        return m_changed.wait_for(lock, patience, [&] { return m_ends >= ends; });
    }

    /// From now on, a callback is an error.
    void expect_silence() { m_expects_silence = true; }
    void expect_calls() { m_expects_silence = false; }

    /// Only between a stop and the next start.
    uint64_t ends() const { return static_cast<uint64_t>(std::count(reported.begin(), reported.end(), 0)); }
    uint64_t frames() const { return reported.size() - ends(); }

private:
    void receive(uint64_t what)
    {
        EXPECT_FALSE(m_expects_silence) << "a callback came after the end";
        EXPECT_FALSE(m_is_inside.exchange(true)) << "two callbacks of one stream at once";
        reported.push_back(what);
        if (on_call)
            on_call(what);
        m_is_inside = false;
        const std::lock_guard lock{m_mutex};
        ++m_calls;
        m_ends += what == 0 ? 1 : 0;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    uint64_t m_calls{0};
    uint64_t m_ends{0};
    std::atomic<bool> m_is_inside{false};
    std::atomic<bool> m_expects_silence{false};
};

/// Calls that other threads repeat until the object goes.
class Repeated {
public:
    Repeated() = default;
    Repeated(const Repeated&) = delete;
    Repeated& operator=(const Repeated&) = delete;
    ~Repeated()
    {
        m_is_over = true;
        for (auto& thread : m_threads)
            thread.join();
    }

    template <class Call>
    void call(Call call)
    {
        m_threads.emplace_back([this, call] {
            for (int round = 0; !m_is_over; ++round)
                call(round);
        });
    }

private:
    std::atomic<bool> m_is_over{false};
    std::vector<std::thread> m_threads;
};

/// How a stream delivers its frames.
enum class Mode { queued, cyclic };

inline uint32_t scan()
{
    uint32_t count = 0xAAAA;
    EXPECT_EQ(success, ZV_DeviceScan(&count));
    return count;
}

inline std::vector<uint32_t> cameras_of(uint32_t grabber)
{
    std::vector<uint32_t> cameras(zv_max_cameras);
    uint32_t count = zv_max_cameras;
    EXPECT_EQ(success, ZVGR_UpdateCameraList(grabber, cameras.data(), &count));
    cameras.resize(count);
    return cameras;
}

inline ZvCameraInfo camera_info(uint32_t camera)
{
    ZvCameraInfo info{};
    EXPECT_EQ(success, ZVGR_CameraInfo2(camera, &info));
    return info;
}

inline uint32_t protocol_of(uint32_t index)
{
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_EQ(success, ZV_DeviceInfo(index, &info));
    return info.protocol;
}

/// A new stream of an open camera, whose callbacks go to the receiver.
inline uint32_t create_stream(uint32_t camera, Mode mode = Mode::queued, Receiver* receiver = nullptr)
{
    uint32_t stream = ZV_NO_HANDLE;
    const bool is_queued = mode == Mode::queued;
    EXPECT_EQ(success, is_queued ? ZVGR_StreamCreate(camera, &stream, 0)
                                 : ZVGR_StreamCreateAndAlloc(camera, &stream, ring_frames, 0));
    if (receiver == nullptr)
        return stream;
    EXPECT_EQ(success, is_queued
                           ? ZVGR_StreamBufferCallbackRegister(stream, &Receiver::buffer_callback, receiver)
                           : ZVGR_CameraCallbackRegister(camera, &Receiver::frame_callback, receiver));
    return stream;
}

inline uint64_t stream_info(uint32_t stream, uint32_t command)
{
    uint64_t value = 0;
    EXPECT_EQ(success, ZVGR_StreamGetInfo(stream, command, &value));
    return value;
}

inline uint64_t buffer_info(uint64_t buffer, uint32_t command)
{
    uint64_t value = 0;
    EXPECT_EQ(success, ZVGR_BufferGetInfo(buffer, command, &value));
    return value;
}

/// A buffer of the present payload that the library allocated, in no queue.
inline uint64_t announce(uint32_t stream)
{
    uint64_t buffer = 0;
    EXPECT_EQ(success, ZVGR_BufferAllocAndAnnounce(stream, stream_info(stream, zv_stream_payload_now),
                                                   nullptr, &buffer));
    return buffer;
}

/// A buffer of consumer memory, in the input queue.
inline uint64_t queue_memory(uint32_t stream, void* memory, size_t size)
{
    uint64_t buffer = 0;
    EXPECT_EQ(success, ZVGR_BufferAnnounce(stream, memory, size, nullptr, &buffer));
    EXPECT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
    return buffer;
}

inline void requeue(uint64_t buffer) { ZVGR_BufferToQueue(buffer, zv_queue_input); }

inline const unsigned char* memory_of(uint64_t buffer)
{
    return reinterpret_cast<const unsigned char*>(buffer_info(buffer, zv_buffer_address));
}

inline uint64_t ring_frame_time(uint32_t stream, uint32_t frame)
{
    ZvFrameAux record{};
    EXPECT_EQ(success, ZVGR_StreamGetAux(stream, frame, &record));
    return record.timestamp;
}

inline bool is_grabbing(uint32_t handle)
{
    return ZVGR_GetGrabberValueEnum(handle, "CameraChannelState") == zv_channel_grabbing;
}

/// The present time in ticks of 25 MHz.
inline uint64_t ticks_now()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) / 40;
}

/// A CoaXPress and a Camera Link HS grabber. Their cameras have small pictures and begin without a delay.
inline constexpr const char* small_grabbers = R"(grabbers:
- name: ZEVA Software Grabber CXP-2
  cameras:
  - {model: SoftCam CX 640, sensor_width: 64, sensor_height: 48, start_up: 0 ms}
  - {model: SoftCam CX 800 HDR, sensor_width: 64, sensor_height: 48, start_up: 0 ms, pixel_format: Mono16}
- protocol: CameraLinkHS
  cameras: [{sensor_width: 64, sensor_height: 48, start_up: 0 ms}]
)";

/// What a fixture begins with.
struct Beginning {
    /// Of the grabber that is opened.
    uint32_t grabber{0};
    /// Frames per second, 0 for cameras that run freely.
    const char* rate{"0"};
    const char* configuration{small_grabbers};
};

/// Those grabbers and the demo grabber, scanned.
class Scanned : public testing::Test {
protected:
    static constexpr uint32_t coaxpress = 0;
    static constexpr uint32_t camera_link_hs = 1;
    static constexpr uint32_t demo = 2;

    explicit Scanned(const Beginning& beginning = {})
        : m_file{beginning.configuration}, m_rate{"ZV_GRABBER_RATE", beginning.rate}
    {
        scan();
    }

private:
    ConfigurationFile m_file;
    Variable m_rate;
};

/// One grabber, open, with its camera handles.
class OpenGrabber : public Scanned {
protected:
    explicit OpenGrabber(const Beginning& beginning = {})
        : Scanned{beginning}, grabber{ZVGR_Open(beginning.grabber)}
    {
    }
    ~OpenGrabber() override { ZVGR_Close(grabber); }

    uint32_t grabber;
    std::vector<uint32_t> cameras{cameras_of(grabber)};
};

/// Its first camera, open.
class OpenCamera : public OpenGrabber {
protected:
    explicit OpenCamera(const Beginning& beginning = {}) : OpenGrabber{beginning}, camera{cameras.at(0)}
    {
        EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    }

    uint32_t start_stream(uint32_t its_stream, uint32_t frames = 0) const
    {
        return ZVGR_CameraStartAcquire_GenTL(camera, its_stream, frames);
    }
    uint32_t stop() const { return ZVGR_CameraStopAcquire_GenTL(camera); }
    /// Meanwhile the other camera of the grabber delivers a few frames.
    void other_camera_delivers() const
    {
        Receiver receiver;
        ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
        const uint32_t other = create_stream(cameras[1], Mode::cyclic, &receiver);
        ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(cameras[1], other, 0));
        EXPECT_TRUE(receiver.wait_for(10));
        EXPECT_EQ(success, ZVGR_StreamDelete(other));
    }

    uint32_t camera;
};

/// A stream of that camera whose callbacks go to `receiver`: in cyclic mode with four ring frames.
class OpenStream : public OpenCamera {
protected:
    explicit OpenStream(Mode its_mode, const Beginning& beginning = {})
        : OpenCamera{beginning}, mode{its_mode}
    {
    }
    ~OpenStream() override
    {
        ZVGR_StreamDelete(stream);
        receiver.expect_silence();
    }

    uint32_t start(uint32_t frames = 0) const { return start_stream(stream, frames); }
    /// Starts, waits for so many callbacks since the stream was made, and stops.
    void acquire(uint64_t calls, uint32_t frames = 0)
    {
        ASSERT_EQ(success, start(frames));
        ASSERT_TRUE(receiver.wait_for(calls));
        ASSERT_EQ(success, stop());
    }
    /// Makes frames come until the stream is stopped: buffers go back to their queue.
    void keep_supplied()
    {
        if (mode == Mode::cyclic)
            return;
        receiver.on_call = requeue;
        for (int buffers = 0; buffers < 4; ++buffers)
            requeue(announce(stream));
    }
    /// The memory of a frame that is being reported.
    const unsigned char* frame_memory(uint64_t reported) const
    {
        if (mode == Mode::queued)
            return memory_of(reported);
        return static_cast<unsigned char*>(ZVGR_StreamGetPtr(stream, ZVGR_StreamGetFrameIndex(stream)));
    }

    Mode mode;
    Receiver receiver;
    uint32_t stream{create_stream(camera, mode, &receiver)};
};

class QueuedStream : public OpenStream {
protected:
    explicit QueuedStream(const Beginning& beginning = {}) : OpenStream{Mode::queued, beginning} {}

    uint64_t queued() const
    {
        const uint64_t buffer = announce(stream);
        EXPECT_EQ(success, ZVGR_BufferToQueue(buffer, zv_queue_input));
        return buffer;
    }
};

class CyclicStream : public OpenStream {
protected:
    CyclicStream() : OpenStream{Mode::cyclic} {}
};

/// A stream of either mode, for the rules that hold for both.
class EitherMode : public OpenStream, public testing::WithParamInterface<Mode> {
protected:
    EitherMode() : OpenStream{GetParam()} {}
};

inline std::string mode_name(Mode mode) { return mode == Mode::queued ? "Queued" : "Cyclic"; }
inline std::string name_of_mode(const testing::TestParamInfo<Mode>& row) { return mode_name(row.param); }

} // namespace zvsim_test
