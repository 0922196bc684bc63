#pragma once

#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "zvgr/ZVGRLib.h"

#include "simulator/Pacer.h"
#include "simulator/faults/FaultPlan.h"

namespace zvsim {

/// What is plugged in, and what has been lost for a while.
class Presence {
public:
    Presence(size_t grabbers, const std::vector<PlugEvent>& events);

    /// False for a place that is unplugged or lost, or whose grabber is.
    bool has(const Place& place) const;
    /// Loses a camera, or a grabber when the place names none.
    void lose(const Place& place, const Absence& absence, Clock::time_point now);

    /// Before the grabbers are listed: what has been missing for long enough is back.
    void begin_scan();
    /// Before the cameras of a grabber are listed.
    void begin_camera_list(uint32_t grabber);
    /// Carries out what is due by time.
    void advance(Clock::time_point first_scan, Clock::time_point now);
    /// Whether anything has gone or come since the last time that this was asked.
    bool take_change() { return std::exchange(m_has_changed, false); }

private:
    struct State {
        bool is_plugged{true};
        bool is_lost{false};
        /// In how many lists it is still missing.
        std::optional<uint32_t> lists;
        std::optional<Clock::time_point> back;

        bool is_there() const { return is_plugged && !is_lost; }
        /// True when it comes back.
        bool pass_list();
    };
    struct GrabberState {
        State grabber;
        std::array<State, zv_max_cameras> cameras;
    };

    State* find(const Place& place);
    const State* find(const Place& place) const { return const_cast<Presence*>(this)->find(place); }
    void apply(PlugEvent& event);

    std::vector<GrabberState> m_states;
    /// Those that are still to come.
    std::vector<PlugEvent> m_events;
    uint64_t m_scans{0};
    /// Something comes back by time.
    bool m_has_returns{false};
    bool m_has_changed{false};
};

} // namespace zvsim
