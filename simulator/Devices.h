#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/Model.h"
#include "simulator/Pacer.h"

// Cameras and grabbers as pieces of hardware: they are there, and keep their settings, whether or not anyone
// has opened them.

namespace zvsim {

struct Description;

/// What a camera remembers: everything that its registers can change.
struct CameraState {
    CameraSettings settings;
    std::string user_id;
    /// A consumer has locked what its buffers depend on.
    bool is_locked{false};
    uint64_t latched_timestamp{0};
    /// Executed ones whose frame has not been taken yet.
    uint64_t triggers{0};
};

/// How many frames of a camera the grabber passed on, since power-on or the last reset.
struct FrameStatistics {
    uint64_t delivered{0};
    uint64_t lost{0};
};

/// A camera. Guarded by the library's lock.
class CameraDevice {
public:
    CameraDevice(const CameraModel& model, const GrabberModel& grabber);

    const CameraModel& model() const { return m_model; }
    const GrabberModel& grabber() const { return m_grabber; }
    const CameraSettings& settings() const { return m_state.settings; }
    const CameraState& state() const { return m_state; }
    /// Made when it is asked for first: few cameras of many are.
    const Description& description() const;
    const FrameStatistics& statistics() const { return m_statistics; }
    /// Bytes of a buffer at the present settings.
    uint64_t payload() const
    {
        return settings().format->size_of(settings().width, settings().height) *
               m_grabber.segments_per_buffer;
    }
    /// The present pixel format as the camera numbers it.
    uint32_t format_code() const { return code_of(*settings().format, m_model.format_codes); }
    /// What makes frames happen at the present settings.
    Pace pace() const;
    /// How many frames the camera sends after a start.
    uint64_t frames_of_acquisition() const;
    /// Degrees Celsius; rises after power-on.
    double temperature(Clock::time_point now) const;
    bool is_connected() const { return m_is_connected; }
    bool is_acquiring() const { return m_is_acquiring; }
    /// Whether size, format and what else buffers depend on cannot be changed now.
    bool has_locked_parameters() const { return m_state.is_locked || m_is_acquiring; }

    void set_state(CameraState state) { m_state = std::move(state); }
    void set_connected(bool is_connected) { m_is_connected = is_connected; }
    /// Forgets what belonged to the consumer that had the camera open before.
    void begin_session() { m_state.is_locked = false; }
    void begin_acquisition();
    void end_acquisition() { m_is_acquiring = false; }
    /// True when a trigger waits for its frame, which the caller takes.
    bool take_trigger();
    void count_delivered() { ++m_statistics.delivered; }
    void count_lost(uint64_t frames) { m_statistics.lost += frames; }
    void reset_statistics() { m_statistics = {}; }
    /// Uses the description of another camera of the grabber if it is the same.
    void share_description(const CameraDevice& other);

private:
    const CameraModel& m_model;
    const GrabberModel& m_grabber;
    const Clock::time_point m_power_on{Clock::now()};
    CameraState m_state;
    FrameStatistics m_statistics;
    const CameraDevice* m_described_by{nullptr}; // another camera
    mutable std::shared_ptr<const Description> m_description;
    bool m_is_connected{true};
    bool m_is_acquiring{false};
};

/// A grabber with what is connected to it. Guarded by the library's lock.
class GrabberDevice {
public:
    explicit GrabberDevice(const GrabberModel& model, uint32_t index = 0);

    const GrabberModel& model() const { return m_model; }
    uint32_t index() const { return m_index; }
    const std::vector<std::unique_ptr<CameraDevice>>& cameras() const { return m_cameras; }
    /// Made when it is asked for first.
    const Description& description() const;

private:
    const GrabberModel& m_model;
    const uint32_t m_index;
    std::vector<std::unique_ptr<CameraDevice>> m_cameras;
    mutable std::shared_ptr<const Description> m_description;
};

} // namespace zvsim
