#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/ZVGRLib.h"

// Situations that the tests of the software grabber library begin with, through its C interface alone.

namespace zvsim_test {

/// How long a test waits for what must come: far beyond any machine's delays, never part of a result.
constexpr std::chrono::seconds patience{120};

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

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_is_open{false};
};

/// An environment variable for the length of a test.
class Variable {
public:
    Variable(std::string name, const std::string& value) : m_name{std::move(name)}
    {
        setenv(m_name.c_str(), value.c_str(), 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { unsetenv(m_name.c_str()); }

private:
    std::string m_name;
};

/// Receives callbacks of one stream, of either kind. What it counts is deliberately not guarded: after a stop
/// the library promises that nobody touches it any more, and ThreadSanitizer checks the promise.
class Receiver {
public:
    using OnBuffer = std::function<void(uint64_t buffer)>;
    using OnFrame = std::function<void(uint32_t stream)>;

    OnBuffer on_buffer;
    OnFrame on_frame;

    static void buffer_callback(uint64_t buffer, void* context)
    {
        auto& self = *static_cast<Receiver*>(context);
        self.enter();
        if (buffer != 0)
            ++self.m_frames;
        else
            ++self.m_ends;
        if (self.on_buffer)
            self.on_buffer(buffer);
        self.leave(buffer == 0);
    }

    static void frame_callback(void* context, uint32_t stream)
    {
        auto& self = *static_cast<Receiver*>(context);
        self.enter();
        ++self.m_frames;
        if (self.on_frame)
            self.on_frame(stream);
        self.leave();
    }

    /// Waits until this many callbacks of frames and ends have returned.
    bool wait_for(uint64_t calls)
    {
        std::unique_lock lock{m_mutex};
        return m_changed.wait_for(lock, patience, [&] { return m_calls >= calls; });
    }

    /// Waits until a callback of an end has returned.
    bool wait_for_end()
    {
        std::unique_lock lock{m_mutex};
        return m_changed.wait_for(lock, patience, [&] { return m_has_ended; });
    }

    /// From now on a callback is an error.
    void expect_silence() { m_expects_silence = true; }
    void expect_calls() { m_expects_silence = false; }

    /// Only between a stop and the next start.
    uint64_t frames() const { return m_frames; }
    uint64_t ends() const { return m_ends; }

private:
    void enter()
    {
        EXPECT_FALSE(m_expects_silence) << "a callback came after the end";
        EXPECT_FALSE(m_is_inside.exchange(true)) << "two callbacks of one stream at once";
    }
    void leave(bool is_end = false)
    {
        m_is_inside = false;
        const std::lock_guard lock{m_mutex};
        ++m_calls;
        m_has_ended = m_has_ended || is_end;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    uint64_t m_calls{0};
    bool m_has_ended{false};
    uint64_t m_frames{0};
    uint64_t m_ends{0};
    std::atomic<bool> m_is_inside{false};
    std::atomic<bool> m_expects_silence{false};
};

/// Cameras keep their settings while the library is loaded. They have those of power-on again when the
/// configuration has been read anew, as it is when the environment has changed.
struct PowerCycle {
    PowerCycle()
    {
        const Variable other_rate{"ZV_GRABBER_RATE", "99999"};
        uint32_t count = 0;
        EXPECT_EQ(uint32_t{zv_success}, ZV_DeviceScan(&count));
    }
};

/// The three grabbers, scanned, with free-running cameras of small pictures, as they are after power-on.
class Scanned : public testing::Test {
protected:
    static constexpr uint32_t coaxpress = 0;
    static constexpr uint32_t camera_link_hs = 1;
    static constexpr uint32_t demo = 2;

    explicit Scanned(const char* rate = "0") : m_rate{"ZV_GRABBER_RATE", rate}
    {
        EXPECT_EQ(uint32_t{zv_success}, ZV_DeviceScan(&m_count));
    }

    uint32_t grabber_count() const { return m_count; }

private:
    PowerCycle m_power_cycle;
    Variable m_rate;
    Variable m_size{"ZV_GRABBER_SIZE", "64x48"};
    uint32_t m_count{0};
};

/// One grabber, open, with its camera handles.
class OpenGrabber : public Scanned {
protected:
    explicit OpenGrabber(uint32_t index = coaxpress, const char* rate = "0")
        : Scanned{rate}, grabber{ZVGR_Open(index)}
    {
        EXPECT_NE(ZV_NO_HANDLE, grabber);
        cameras.resize(zv_max_cameras);
        uint32_t count = zv_max_cameras;
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_UpdateCameraList(grabber, cameras.data(), &count));
        cameras.resize(count);
    }
    ~OpenGrabber() override { ZVGR_Close(grabber); }

    uint32_t grabber;
    std::vector<uint32_t> cameras;
};

/// Its first camera, open.
class OpenCamera : public OpenGrabber {
protected:
    explicit OpenCamera(uint32_t index = coaxpress, const char* rate = "0")
        : OpenGrabber{index, rate}, camera{cameras.front()}
    {
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_CameraOpen2(camera, nullptr));
    }

    uint32_t start(uint32_t stream, uint32_t frames = 0)
    {
        return ZVGR_CameraStartAcquire_GenTL(camera, stream, frames);
    }
    uint32_t stop() { return ZVGR_CameraStopAcquire_GenTL(camera); }

    uint32_t camera;
};

inline uint64_t stream_info(uint32_t stream, uint32_t command)
{
    uint64_t value = 0;
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamGetInfo(stream, command, &value));
    return value;
}

inline uint64_t buffer_info(uint64_t buffer, uint32_t command)
{
    uint64_t value = 0;
    EXPECT_EQ(uint32_t{zv_success}, ZVGR_BufferGetInfo(buffer, command, &value));
    return value;
}

/// The present time in ticks of 25 MHz.
inline uint64_t ticks_now()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()) / 40;
}

/// A queued-mode stream of that camera whose callbacks go to `receiver`.
class QueuedStream : public OpenCamera {
protected:
    explicit QueuedStream(uint32_t index = coaxpress, const char* rate = "0") : OpenCamera{index, rate}
    {
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamCreate(camera, &stream, 0));
        EXPECT_EQ(uint32_t{zv_success},
                  ZVGR_StreamBufferCallbackRegister(stream, &Receiver::buffer_callback, &receiver));
    }
    ~QueuedStream() override
    {
        ZVGR_StreamDelete(stream);
        receiver.expect_silence();
    }

    /// A buffer that the library allocated, in no queue.
    uint64_t announced() const
    {
        uint64_t buffer = 0;
        EXPECT_EQ(uint32_t{zv_success},
                  ZVGR_BufferAllocAndAnnounce(stream, stream_info(stream, zv_stream_payload_now), nullptr,
                                              &buffer));
        return buffer;
    }
    uint64_t queued() const
    {
        const uint64_t buffer = announced();
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_BufferToQueue(buffer, zv_queue_input));
        return buffer;
    }
    static const unsigned char* memory(uint64_t buffer)
    {
        return reinterpret_cast<const unsigned char*>(buffer_info(buffer, zv_buffer_address));
    }

    uint32_t stream{ZV_NO_HANDLE};
    Receiver receiver;
};

/// A cyclic-mode stream of that camera, with four ring frames, whose callbacks go to `receiver`.
class CyclicStream : public OpenCamera {
protected:
    static constexpr uint32_t ring_frames = 4;

    CyclicStream()
    {
        EXPECT_EQ(uint32_t{zv_success}, ZVGR_StreamCreateAndAlloc(camera, &stream, ring_frames, 0));
        EXPECT_EQ(uint32_t{zv_success},
                  ZVGR_CameraCallbackRegister(camera, &Receiver::frame_callback, &receiver));
    }
    ~CyclicStream() override
    {
        ZVGR_StreamDelete(stream);
        receiver.expect_silence();
    }

    uint32_t stream{ZV_NO_HANDLE};
    Receiver receiver;
};

} // namespace zvsim_test
