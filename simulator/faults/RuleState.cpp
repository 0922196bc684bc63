#include "simulator/faults/RuleState.h"

#include "zvgr/ZVGRLib.h"

namespace zvsim {

namespace {

/// The finaliser of SplitMix64: every bit of the input changes about half of the output.
uint64_t mixed(uint64_t value)
{
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ value >> 30U) * 0xBF58476D1CE4E5B9U;
    value = (value ^ value >> 27U) * 0x94D049BB133111EBU;
    return value ^ value >> 31U;
}

} // namespace

RuleState::RuleState(const FaultRule& rule, uint64_t seed, size_t number, size_t grabbers)
    : m_rule{rule}, m_seed{mixed(mixed(seed) + number)},
      m_counters(row_of(rule.kind).opportunity == Opportunity::call ? 1 : 1 + grabbers * zv_max_cameras)
{
}

bool RuleState::concerns(const Place& place) const
{
    const auto fits = [](uint32_t wanted, uint32_t given) {
        return wanted == Place::none || wanted == given;
    };
    return fits(m_rule.place.grabber, place.grabber) && fits(m_rule.place.camera, place.camera);
}

bool RuleState::happens(const Occasion& occasion)
{
    const size_t cell = cell_of(occasion.place);
    Counter& counter = m_counters[cell];
    const uint64_t opportunity = counter.opportunities++;
    const uint64_t position = m_rule.when.is_by_frame ? occasion.frame : opportunity;
    const Trigger& when = m_rule.when;
    if (position < when.first || position > when.last || (position - when.first) % when.every != 0)
        return false;
    if (counter.happened >= m_rule.times || !is_due(occasion) || !is_drawn(cell, opportunity))
        return false;
    ++counter.happened;
    return true;
}

size_t RuleState::cell_of(const Place& place) const
{
    const size_t cell = 1 + size_t{place.grabber} * zv_max_cameras + place.camera;
    return cell < m_counters.size() ? cell : 0;
}

bool RuleState::is_due(const Occasion& occasion) const
{
    const Trigger& when = m_rule.when;
    const auto begin = when.since == Trigger::Since::start ? occasion.start : occasion.first_scan;
    return !when.after || occasion.now - begin >= *when.after;
}

bool RuleState::is_drawn(size_t cell, uint64_t opportunity) const
{
    if (m_rule.when.probability >= 1)
        return true;
    constexpr double steps = 9007199254740992.0; // 2^53: a double represents each of them exactly
    const uint64_t drawn = mixed(mixed(m_seed + cell) + opportunity) >> 11U;
    return static_cast<double>(drawn) < m_rule.when.probability * steps;
}

} // namespace zvsim
