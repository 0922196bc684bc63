#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "zvgr/ZVGRLib.h"

#include "platform/unloading.h"
#include "simulator/Configuration.h"
#include "simulator/Devices.h"
#include "simulator/Stream.h"
#include "simulator/faults/Call.h"
#include "simulator/faults/FaultEngine.h"
#include "simulator/faults/PlugTimer.h"

namespace zvsim {

/// An open grabber.
struct Grabber {
    Place place;
    GrabberDevice* device;
    std::vector<uint32_t> cameras;
};

/// A camera of an open grabber.
struct Camera {
    uint32_t grabber;
    CameraDevice* device;
    Place place;
    bool is_open{false};
    /// Since it was opened: it must be opened again.
    bool has_been_lost{false};
    ZvCameraCallback callback{nullptr};
    void* context{nullptr};
    /// Where the callback is.
    platform::LoadedModule receiver{};

    void set_callback(ZvCameraCallback function, void* its_context)
    {
        callback = function;
        context = its_context;
        receiver = platform::LoadedModule{reinterpret_cast<const void*>(function)};
    }
    void forget_callback()
    {
        callback = nullptr;
        receiver = platform::LoadedModule{};
    }
};

/// The process-wide state: configuration, open grabbers, cameras and streams. One lock guards all of it; it
/// is never held while frames are drawn or a callback runs. A pointer that a function returns stays
/// valid until the lock is released; functions that take the lock release it while they wait.
class Library {
public:
    /// Never destroyed, so that a call that comes while the process ends finds an empty library.
    static Library& instance();

    Lock lock() { return Lock{m_mutex}; }
    /// Signalled when an acquisition has ended, a thread has left, or a buffer has been drawn.
    std::condition_variable& changed() { return m_changed; }

    /// Reads the configuration if it is missing, or if the environment has changed and nothing is open.
    void configure();
    bool is_configured() const { return m_configuration != nullptr; }
    /// Numbers the grabbers that are there.
    void scan();
    uint32_t grabber_count() const { return static_cast<uint32_t>(m_present.size()); }
    /// Null for an index beyond the last scan.
    GrabberDevice* grabber_device(uint32_t index) const;
    /// Whether a grabber or camera is there, and not unplugged or lost.
    bool is_there(const Place& place) const { return m_faults == nullptr || m_faults->has(place); }
    /// Tells the cameras of a grabber whether they are there.
    void update_links(const Grabber& grabber);
    /// The same text for as long as the library is loaded.
    const char* keep_text(const std::string& text);

    /// A grabber handle, or ZV_NO_HANDLE.
    uint32_t open_grabber(uint32_t index);
    uint32_t close_grabber(Lock& lock, uint32_t handle);
    Grabber* find_grabber(uint32_t handle);
    Camera* find_camera(uint32_t handle);
    uint32_t close_camera(Lock& lock, uint32_t handle);

    using MakeStream = std::function<std::unique_ptr<Stream>(uint32_t handle, CameraDevice& device)>;
    /// A stream handle, or ZV_NO_HANDLE.
    uint32_t add_stream(uint32_t camera, const MakeStream& make);
    uint32_t delete_stream(Lock& lock, uint32_t handle);
    /// A stream that lives and is of this kind.
    template <class Kind>
    Kind* find_stream(uint32_t handle)
    {
        const auto found = m_streams.find(handle);
        return found != m_streams.end() && !found->second->is_dead()
                   ? dynamic_cast<Kind*>(found->second.get())
                   : nullptr;
    }
    /// Any stream that is still there, dead ones too.
    Stream* find_any_stream(uint32_t handle);
    /// The stream on which this camera acquires, or null.
    Stream* acquiring_stream(uint32_t camera);
    /// Waits while the end of the acquisition before is still being reported.
    uint32_t start(Lock& lock, uint32_t camera, uint32_t stream, uint32_t frames);
    uint32_t stop(Lock& lock, uint32_t camera);

    /// Null: there is nothing for it to do.
    const std::shared_ptr<FaultEngine>& faults() const { return m_faults; }
    Place place_of(const Target& target) const;
    /// 'g' grabber, 'c' camera, 's' stream, '?' nothing that is there.
    char kind_of(uint32_t handle) const;
    /// The streams of a grabber or camera, or the stream itself.
    std::vector<uint32_t> streams_of(const Target& target) const;
    /// The stream whose thread this is, or 0.
    uint32_t stream_of_this_thread() const;
    /// Tells the cameras whether they are there, and ends the acquisitions of those that are not as if by
    /// themselves.
    void follow_presence();

    /// Ends everything, for good. A callback that does not return within five seconds is left behind: a
    /// process that ends does not wait forever.
    void shut_down();
    /// Whether grabbers were opened by the process that this one was forked from: their threads are not here.
    bool is_of_parent() const noexcept;

private:
    uint32_t new_handle();
    Place place_of_handle(uint32_t handle) const;
    /// Replaces the faults by those of the configuration.
    void renew_faults();
    void watch_plugs();
    /// Releases the lock meanwhile.
    void end_plug_timer(Lock& lock);
    // A call made inside a callback does not wait for that callback. Ending something needs no memory.
    void stop_streams_of(Lock& lock, uint32_t camera);
    /// Kills the streams for which `belongs(stream handle, camera handle)` holds, and waits until they are
    /// gone.
    template <class Belongs>
    void retire_streams(Lock& lock, const Belongs& belongs);
    void release_left_streams(Lock& lock);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_is_shut_down{false};
    std::atomic<uint32_t> m_process{0}; // that has opened a grabber last
    uint32_t m_last_handle{0x1000};
    std::unique_ptr<const Configuration> m_configuration;
    /// What the configuration describes.
    std::vector<std::unique_ptr<GrabberDevice>> m_devices;
    /// Positions in m_devices of the grabbers that the last scan found.
    std::vector<uint32_t> m_present;
    /// Shared with the calls that it is asked about.
    std::shared_ptr<FaultEngine> m_faults;
    std::unique_ptr<PlugTimer> m_plug_timer;
    std::set<std::string> m_texts;
    std::map<uint32_t, Grabber> m_grabbers;
    /// The handle of each camera, by its grabber's position and its own: kept while the grabber is closed.
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> m_camera_handles;
    std::map<uint32_t, Camera> m_cameras;
    /// With the dead ones whose thread has not left yet.
    std::map<uint32_t, std::unique_ptr<Stream>> m_streams;
};

} // namespace zvsim
