#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/unloading.h"
#include "simulator/Pacer.h"
#include "simulator/PictureSource.h"
#include "simulator/faults/FrameFaults.h"

namespace zvsim {

class CameraDevice;
class Library;

using Lock = std::unique_lock<std::mutex>;

/// A stream of a camera, owned by the library, in one of two modes (the subclasses). Its thread starts with
/// the first acquisition and ends with the stream; it alone draws frames and calls back, so callbacks of one
/// stream never overlap. Every member function is called with the library's lock held; the thread gives the
/// lock up while it draws and while it calls back.
///
/// Acquisitions are numbered. One that is stopped ends as soon as its thread sees it: m_ended tells the
/// others, through Library::changed(). A deleted stream is *dead*: it no longer has a handle, and the library
/// keeps it until its thread has left.
class Stream {
public:
    Stream(Library& library, uint32_t handle, uint32_t camera, CameraDevice& device);
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    /// Joins the thread, which must have left or never started. Without the lock.
    virtual ~Stream();

    uint32_t camera() const { return m_camera; }
    uint64_t payload() const { return m_payload; }
    bool is_dead() const { return m_is_dead; }
    bool is_acquiring() const { return m_is_acquiring; }

    /// Starts an acquisition of `frames` frames, 0: until stopped. Throws when there is no memory or thread.
    void start(uint32_t frames);
    /// Ends the acquisition; a frame on its way is not reported any more.
    void stop();
    /// Ends the acquisition as if by itself: that is reported.
    void run_out();
    /// Ends everything; the handles of the stream and of its buffers are dead from now on.
    void kill();

    /// Lets settings of the camera that have changed take effect.
    void follow_settings() { wake(); }

    /// True while the end of an acquisition is being reported. One that another thread started now would be
    /// taken for ended by its receiver.
    bool is_reporting_end() const { return m_is_reporting_end; }
    /// True when the thread has done its last work for everything that was stopped.
    bool has_stopped() const { return m_ended >= m_stopped || has_left(); }
    /// True when a dead stream's thread will not come back.
    bool has_left() const { return m_has_left || !m_thread.joinable(); }
    /// True on this stream's own thread, that is inside one of its callbacks.
    bool is_own_thread() const { return m_thread.get_id() == std::this_thread::get_id(); }

protected:
    struct Acquisition {
        uint64_t number;
        /// To be delivered; 0: until stopped.
        uint32_t frames;
        /// How many the camera still sends, delivered or not.
        uint64_t frames_to_send;
        /// Its number, when nothing is skipped.
        uint64_t next_frame;
        Pacer pacer;
        std::unique_ptr<PictureSource> source;
        FrameFaults faults;
    };

    Library& library() const { return m_library; }
    uint32_t handle() const { return m_handle; }
    const CameraDevice& device() const { return m_device; }
    /// What a frame that is taken now is drawn with.
    Exposure exposure_of(const Frame& frame) const;
    bool is_current(const Acquisition& acquisition) const;
    void wake() { m_wake.notify_one(); }

    /// Makes room for the frames of an acquisition that begins; on the stream's thread, outside callbacks.
    virtual void prepare() {}
    /// Whether a free-running camera can expose a frame now.
    virtual bool has_room() const = 0;
    /// Draws a frame and reports it; false when the frame was lost.
    virtual bool deliver(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate) = 0;
    /// Waits, unless the acquisition ends meanwhile.
    void hold_up(Lock& lock, const Acquisition& acquisition, std::chrono::microseconds time);
    void log_delivery(const FrameFate& fate) const;
    /// Reports that the acquisition has ended by itself.
    virtual void report_end(Lock& lock) = 0;

private:
    void work();
    void acquire(Lock& lock, Acquisition& acquisition);
    void idle();
    bool wait_for_frame(Lock& lock, Acquisition& acquisition);
    /// Whether a frame whose time has come happens now; takes its trigger.
    bool can_expose(const Acquisition& acquisition);
    bool wait_for_room(Lock& lock, const Acquisition& acquisition);
    /// Delivers a frame, or what faults make of it.
    void expose(Lock& lock, Acquisition& acquisition, const Frame& frame);
    void deliver_one(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate);
    bool is_over(const Acquisition& acquisition) const { return !is_current(acquisition) || m_has_run_out; }

    Library& m_library;
    const uint32_t m_handle;
    const uint32_t m_camera;
    CameraDevice& m_device;
    const uint64_t m_payload;

    /// Wakes the thread, and nobody else.
    std::condition_variable m_wake;
    std::optional<Acquisition> m_next;
    /// The latest acquisition that was started.
    uint64_t m_started{0};
    /// The latest one that was asked to stop.
    uint64_t m_stopped{0};
    /// The latest one that is over and reported.
    uint64_t m_ended{0};
    /// Frames of the acquisition that the thread works at.
    uint64_t m_delivered{0};
    bool m_is_acquiring{false};
    /// The acquisition that is running ends by itself.
    bool m_has_run_out{false};
    bool m_is_reporting_end{false};
    bool m_is_dead{false};
    bool m_has_left{false};
    /// Where the thread is.
    platform::LoadedModule m_library_module;
    std::thread m_thread;
};

} // namespace zvsim
