#include "benchmarks/Comparison.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

namespace zvbench {

namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::duration<double, std::nano>;

constexpr size_t rounds_wanted = 15;
constexpr size_t rounds_allowed = 20 * rounds_wanted;
constexpr Nanoseconds round_length = std::chrono::milliseconds{4}; // far longer than a clock tick

double quantile(std::vector<double> values, double part)
{
    const auto position =
        values.begin() + static_cast<ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), position, values.end());
    return *position;
}

double time_of_one(const Work& work, size_t count)
{
    const auto start = Clock::now();
    work(count);
    return Nanoseconds{Clock::now() - start}.count() / static_cast<double>(count);
}

/// How many make a round. Also warms up.
size_t count_for(const Work& work)
{
    size_t count = 1;
    for (;;) {
        const double taken = time_of_one(work, count) * static_cast<double>(count);
        if (taken >= round_length.count())
            return count;
        count *= taken < round_length.count() / 16 ? 8 : 2;
    }
}

} // namespace

double Times::median() const { return quantile(rounds, 0.5); }

double Times::spread() const { return (quantile(rounds, 0.75) - quantile(rounds, 0.25)) / median(); }

Comparison compare(const Work& anchor, const Work& subject, double tolerance)
{
    const size_t anchors = count_for(anchor);
    const size_t subjects = count_for(subject);
    Comparison comparison;
    for (size_t round = 0; comparison.ratio.rounds.size() < rounds_wanted; ++round) {
        if (round == rounds_allowed)
            throw std::runtime_error{"the machine is too busy: the anchor keeps disagreeing with itself"};
        const double before = time_of_one(anchor, anchors);
        const double between = time_of_one(subject, subjects);
        const double after = time_of_one(anchor, anchors);
        if (std::abs(before - after) > tolerance * std::min(before, after)) {
            ++comparison.void_rounds;
            continue;
        }
        const double mean = (before + after) / 2;
        comparison.anchor.rounds.push_back(mean);
        comparison.subject.rounds.push_back(between);
        comparison.ratio.rounds.push_back(between / mean);
    }
    return comparison;
}

} // namespace zvbench
