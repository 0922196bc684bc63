#include "simulator/faults/FaultEngine.h"

#include "zvgr/ZVGRLib.h"

#include "simulator/Library.h"
#include "simulator/Log.h"

namespace zvsim {

namespace {

constexpr std::string_view pixel_format = "PixelFormat";

bool is_payload(uint64_t command)
{
    return command == zv_stream_payload_at_creation || command == zv_stream_payload_now;
}

/// Whether a rule is about such a call.
bool is_meant(const FaultRule& rule, const Call& call)
{
    const Argument& first = call.arguments[0];
    if (!has(rule.functions, call.function) || (rule.command && *rule.command != first.value))
        return false;
    const std::string_view name =
        rule.kind == FaultKind::pixel_format_unknown ? pixel_format : std::string_view{rule.name};
    if (!name.empty() && (first.text == nullptr || name != first.text))
        return false;
    const bool is_about_payload =
        rule.kind == FaultKind::payload_size_wrong || rule.kind == FaultKind::payload_size_zero;
    return !is_about_payload || is_payload(first.value);
}

} // namespace

FaultEngine::FaultEngine(const FaultPlan& plan, size_t grabbers)
    : m_seed{plan.seed}, m_presence{grabbers, plan.is_enabled ? plan.events : std::vector<PlugEvent>{}}
{
    for (size_t i = 0; plan.is_enabled && i < plan.faults.size(); ++i) {
        const FaultRule& rule = plan.faults[i];
        const Opportunity opportunity = row_of(rule.kind).opportunity;
        auto& rules = opportunity == Opportunity::call    ? m_call_rules
                      : opportunity == Opportunity::start ? m_start_rules
                                                          : m_frame_rules;
        rules.emplace_back(rule, plan.seed, i, grabbers);
    }
    for (size_t i = 0; plan.is_enabled && i < plan.events.size(); ++i) {
        if (plan.events[i].at)
            m_event_times.push_back(m_first_scan +
                                    std::chrono::duration_cast<Clock::duration>(*plan.events[i].at));
    }
    if (plan.call_log.empty())
        return;
    m_log = std::make_unique<CallLog>(plan.call_log);
    if (!m_log->is_open()) {
        log_warning("the call log " + plan.call_log.u8string() + " cannot be written");
        m_log.reset();
    }
}

bool FaultEngine::is_needed(const FaultPlan& plan)
{
    return !plan.call_log.empty() || (plan.is_enabled && (!plan.faults.empty() || !plan.events.empty()));
}

void FaultEngine::lose(const Place& place, const Absence& absence)
{
    m_presence.lose(place, absence, Clock::now());
    follow_presence();
}

void FaultEngine::advance()
{
    m_presence.advance(m_first_scan, Clock::now());
    follow_presence();
}

void FaultEngine::follow_presence()
{
    if (m_presence.take_change())
        Library::instance().follow_presence();
}

Verdict FaultEngine::before(const Call& call, const Place& place)
{
    advance();
    if (call.function == Function::device_scan)
        m_presence.begin_scan();
    if (call.function == Function::update_camera_list)
        m_presence.begin_camera_list(place.grabber);
    follow_presence();
    Verdict verdict;
    for (RuleState& state : m_call_rules) {
        if (is_meant(state.rule(), call) && state.concerns(place))
            judge(call, place, state, verdict);
    }
    if (!has(place) && !row_of(call.function).ends) {
        verdict.is_carried_out = false;
        verdict.failure = status_gone;
    }
    return verdict;
}

void FaultEngine::judge(const Call& call, const Place& place, RuleState& state, Verdict& verdict)
{
    const FaultRule& rule = state.rule();
    if (verdict.alteration_count == Verdict::most_alterations ||
        !state.happens({place, 0, Clock::now(), m_first_scan, m_first_scan}))
        return;
    log_call_fault(call, rule);
    switch (row_of(rule.kind).effect) {
    case Effect::fails: // the caller of an ending function relies on the end: memory may be gone afterwards
        verdict.is_carried_out = verdict.is_carried_out && row_of(call.function).ends;
        verdict.failure = rule.status;
        break;
    case Effect::delays:
        verdict.delay += rule.time;
        break;
    case Effect::untouched:
        verdict.is_carried_out = false;
        break;
    case Effect::alters:
        verdict.alterations[verdict.alteration_count] = rule.kind;
        verdict.amounts[verdict.alteration_count++] = rule.amount;
        break;
    case Effect::loses: {
        const bool is_grabber = rule.kind == FaultKind::grabber_lost;
        lose({place.grabber, is_grabber ? Place::none : place.camera}, rule.absence);
        break;
    }
    case Effect::on_frames:
        break;
    }
}

FrameFaults FaultEngine::begin_acquisition(uint32_t stream, const Place& place)
{
    bool is_silent = false;
    const auto now = Clock::now();
    for (RuleState& state : m_start_rules) {
        if (!state.concerns(place) || !state.happens({place, 0, now, m_first_scan, now}))
            continue;
        is_silent = true;
        if (m_log != nullptr)
            m_log->add(0, std::string{"fault "} + row_of(state.rule().kind).name);
    }
    return is_silent || !m_frame_rules.empty() ? FrameFaults{*this, stream, place, is_silent} : FrameFaults{};
}

void FaultEngine::end_log()
{
    if (m_log != nullptr)
        m_log->release_all();
    m_log.reset();
}

void FaultEngine::log_call_fault(const Call& call, const FaultRule& rule)
{
    if (m_log == nullptr)
        return;
    const uint32_t stream = Library::instance().stream_of_this_thread();
    const std::string line =
        std::string{"fault "} + row_of(rule.kind).name + " at " + row_of(call.function).name;
    m_log->add(stream, stream == 0 ? line : m_log->name_of('s', stream) + ' ' + line);
}

void FaultEngine::log_frame_fault(uint32_t stream, const FaultRule& rule, uint64_t frame)
{
    if (m_log != nullptr)
        m_log->add(stream, m_log->name_of('s', stream) + " fault " + row_of(rule.kind).name + " at frame " +
                               std::to_string(frame));
}

} // namespace zvsim
