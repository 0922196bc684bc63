#pragma once

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/faults/Call.h"
#include "simulator/faults/CallLog.h"
#include "simulator/faults/FaultPlan.h"
#include "simulator/faults/FrameFaults.h"
#include "simulator/faults/Presence.h"
#include "simulator/faults/RuleState.h"

namespace zvsim {

/// What is to happen to a call.
struct Verdict {
    static constexpr size_t most_alterations = 8;

    bool is_carried_out{true};
    /// The status that it answers, where it answers one.
    std::optional<uint32_t> failure;
    std::chrono::microseconds delay{0};
    std::array<FaultKind, most_alterations> alterations{};
    std::array<int64_t, most_alterations> amounts{};
    size_t alteration_count{0};
};

/// The faults, the hot plugging and the call log of one configuration. The library has one only when there is
/// something for it to do, and it is kept until the process ends: calls that go on may still use it. Guarded
/// by the library's lock.
class FaultEngine {
public:
    FaultEngine(const FaultPlan& plan, size_t grabbers);

    /// Whether a plan gives an engine anything to do.
    static bool is_needed(const FaultPlan& plan);

    Clock::time_point first_scan() const { return m_first_scan; }
    bool has(const Place& place) const { return m_presence.has(place); }
    /// Ends the acquisitions of what it loses too.
    void lose(const Place& place, const Absence& absence);
    /// Lets happen what is due by time.
    void advance();
    /// The times at which advance() has something to do.
    const std::vector<Clock::time_point>& event_times() const { return m_event_times; }

    /// What happens to a call that is about this place.
    Verdict before(const Call& call, const Place& place);
    /// Changes the results of a call that was carried out and has succeeded.
    void alter(const Call& call, const Verdict& verdict, uint64_t& result);

    /// The faults of an acquisition that begins.
    FrameFaults begin_acquisition(uint32_t stream, const Place& place);
    template <class Happen>
    void for_each_frame_fault(uint32_t stream, const Occasion& occasion, const Happen& happen)
    {
        for (RuleState& state : m_frame_rules) {
            if (!state.concerns(occasion.place) || !state.happens(occasion))
                continue;
            log_frame_fault(stream, state.rule(), occasion.frame);
            happen(state.rule());
        }
    }

    /// Null: none is written.
    CallLog* call_log() const { return m_log.get(); }
    /// Writes what is still to be written. Nothing may be noted down any more.
    void end_log();

private:
    void follow_presence();
    void judge(const Call& call, const Place& place, RuleState& state, Verdict& verdict);
    void log_call_fault(const Call& call, const FaultRule& rule);
    void log_frame_fault(uint32_t stream, const FaultRule& rule, uint64_t frame);
    void remember_description(const Call& call);
    void spoil_description(const Call& call);

    struct Range {
        uint64_t address;
        uint64_t length;
    };

    const uint64_t m_seed;
    const Clock::time_point m_first_scan{Clock::now()};
    std::vector<RuleState> m_call_rules;
    std::vector<RuleState> m_start_rules;
    std::vector<RuleState> m_frame_rules;
    std::vector<Clock::time_point> m_event_times;
    Presence m_presence;
    /// Where those that were asked for are, by handle.
    std::map<uint64_t, Range> m_descriptions;
    std::unique_ptr<CallLog> m_log;
};

} // namespace zvsim
