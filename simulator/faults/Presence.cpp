#include "simulator/faults/Presence.h"

#include <algorithm>

namespace zvsim {

Presence::Presence(size_t grabbers, const std::vector<PlugEvent>& events)
    : m_states(grabbers), m_events{events}
{
}

bool Presence::State::pass_list()
{
    if (!is_lost || !lists)
        return false;
    if (*lists > 0) {
        --*lists;
        return false;
    }
    is_lost = false;
    return true;
}

bool Presence::has(const Place& place) const
{
    const State* const grabber = find({place.grabber, Place::none});
    if (grabber == nullptr)
        return true;
    const State* const state = find(place);
    return grabber->is_there() && (state == nullptr || state->is_there());
}

void Presence::lose(const Place& place, const Absence& absence, Clock::time_point now)
{
    State* const state = find(place);
    if (state == nullptr)
        return;
    state->is_lost = true;
    m_has_changed = true;
    state->lists = absence.scans;
    state->back.reset();
    if (!absence.time)
        return;
    state->back = now + std::chrono::duration_cast<Clock::duration>(*absence.time);
    m_has_returns = true;
}

void Presence::begin_scan()
{
    ++m_scans;
    for (PlugEvent& event : m_events) {
        if (!event.at && event.scan == m_scans)
            apply(event);
    }
    for (GrabberState& state : m_states)
        m_has_changed = state.grabber.pass_list() || m_has_changed;
}

void Presence::begin_camera_list(uint32_t grabber)
{
    if (grabber >= m_states.size())
        return;
    for (State& camera : m_states[grabber].cameras)
        m_has_changed = camera.pass_list() || m_has_changed;
}

void Presence::advance(Clock::time_point first_scan, Clock::time_point now)
{
    const auto is_due = [&](const PlugEvent& event) { return event.at && first_scan + *event.at <= now; };
    for (PlugEvent& event : m_events) {
        if (is_due(event))
            apply(event);
    }
    m_events.erase(std::remove_if(m_events.begin(), m_events.end(), is_due), m_events.end());
    if (!m_has_returns)
        return;
    const auto come_back = [&](State& state) {
        if (!state.is_lost || !state.back || *state.back > now)
            return;
        state.is_lost = false;
        m_has_changed = true;
    };
    for (GrabberState& state : m_states) {
        come_back(state.grabber);
        std::for_each(state.cameras.begin(), state.cameras.end(), come_back);
    }
}

Presence::State* Presence::find(const Place& place)
{
    if (place.grabber >= m_states.size())
        return nullptr;
    GrabberState& grabber = m_states[place.grabber];
    if (place.camera == Place::none)
        return &grabber.grabber;
    return place.camera < grabber.cameras.size() ? &grabber.cameras[place.camera] : nullptr;
}

void Presence::apply(PlugEvent& event)
{
    if (State* const state = find(event.place))
        state->is_plugged = event.is_plugged;
    m_has_changed = true;
}

} // namespace zvsim
