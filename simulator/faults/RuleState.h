#pragma once

#include <vector>

#include "simulator/Pacer.h"
#include "simulator/faults/FaultPlan.h"

namespace zvsim {

/// One opportunity of a rule.
struct Occasion {
    Place place;
    /// Of opportunities at frames.
    uint64_t frame{0};
    Clock::time_point now;
    Clock::time_point first_scan;
    /// Of opportunities at frames.
    Clock::time_point start;
};

/// A rule with its counters. Opportunities at calls are counted together; those at frames and starts
/// separately for each camera, since the streams of several cameras race each other. So what happens at an
/// opportunity depends on nothing but the seed, the rule and how many opportunities there were before.
class RuleState {
public:
    /// `number` is the rule's position; `grabbers` how many there are.
    RuleState(const FaultRule& rule, uint64_t seed, size_t number, size_t grabbers);

    const FaultRule& rule() const { return m_rule; }
    bool concerns(const Place& place) const;
    /// Counts an opportunity at a place that the rule concerns; true when the fault happens. Allocates
    /// nothing.
    bool happens(const Occasion& occasion);

private:
    struct Counter {
        uint64_t opportunities{0};
        uint64_t happened{0};
    };

    size_t cell_of(const Place& place) const;
    bool is_due(const Occasion& occasion) const;
    bool is_drawn(size_t cell, uint64_t opportunity) const;

    FaultRule m_rule;
    uint64_t m_seed;
    std::vector<Counter> m_counters;
};

} // namespace zvsim
