#include "benchmarks/Comparison.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

namespace zvbench {

namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::duration<double, std::nano>;

constexpr Nanoseconds round_length = std::chrono::milliseconds{4}; // far longer than a clock tick

double quantile(std::vector<double> values, double part)
{
    const auto position =
        values.begin() + static_cast<ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), position, values.end());
    return *position;
}

/// How many make a round. Also warms up.
size_t count_for(const Work& work, const Limits& limits)
{
    if (effort().is_trial || limits.count != 0)
        return std::max<size_t>(limits.count, 1);
    size_t count = 1;
    for (;;) {
        const auto start = Clock::now();
        work(count);
        const Nanoseconds taken = Clock::now() - start;
        if (taken >= round_length)
            return count;
        count *= taken < round_length / 16 ? 8 : 2;
    }
}

double thread_time()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

struct Round {
    double anchor;
    double subject;
};

/// Drops the rounds in which the anchor was far slower than in the fastest.
void drop_slow(std::vector<Round>& rounds)
{
    const auto by_anchor = [](const Round& left, const Round& right) { return left.anchor < right.anchor; };
    const double fastest = std::min_element(rounds.begin(), rounds.end(), by_anchor)->anchor;
    const auto is_slow = [=](const Round& round) { return round.anchor > (1 + other_rounds) * fastest; };
    rounds.erase(std::remove_if(rounds.begin(), rounds.end(), is_slow), rounds.end());
}

Comparison comparison_of(const std::vector<Round>& rounds, size_t all_rounds)
{
    Comparison comparison;
    for (const Round& round : rounds) {
        comparison.anchor.rounds.push_back(round.anchor);
        comparison.subject.rounds.push_back(round.subject);
        comparison.ratio.rounds.push_back(round.subject / round.anchor);
    }
    comparison.void_rounds = all_rounds - rounds.size();
    return comparison;
}

} // namespace

Work computing(std::function<void(size_t count)> run)
{
    return [run = std::move(run)](size_t count) {
        const double start = thread_time();
        run(count);
        return (thread_time() - start) / static_cast<double>(count);
    };
}

Work elapsing(std::function<void(size_t count)> run)
{
    return [run = std::move(run)](size_t count) {
        const auto start = Clock::now();
        run(count);
        return Nanoseconds{Clock::now() - start}.count() / static_cast<double>(count);
    };
}

Effort& effort()
{
    static Effort effort;
    return effort;
}

double Times::median() const { return quantile(rounds, 0.5); }

double Times::fastest() const { return *std::min_element(rounds.begin(), rounds.end()); }

double Times::spread() const { return (quantile(rounds, 0.75) - quantile(rounds, 0.25)) / median(); }

Comparison compare(const Work& anchor, const Work& subject, const Limits& limits)
{
    const size_t anchors = count_for(anchor, limits);
    const size_t subjects = count_for(subject, limits);
    const size_t wanted = effort().is_trial ? 1 : effort().rounds;
    const auto end = Clock::now() + limits.patience;
    std::vector<Round> rounds;
    size_t all_rounds = 0;
    while (rounds.size() < wanted) {
        if (!effort().is_trial && Clock::now() > end)
            throw NoResult{"machine too busy"};
        ++all_rounds;
        const double before = anchor(anchors);
        const double between = subject(subjects);
        const double after = anchor(anchors);
        const bool is_steady = std::abs(before - after) <= limits.tolerance * std::min(before, after);
        if (!is_steady && !effort().is_trial)
            continue;
        rounds.push_back({(before + after) / 2, between});
        drop_slow(rounds);
    }
    return comparison_of(rounds, all_rounds);
}

Times time_alone(const Work& subject, size_t count)
{
    const size_t wanted = effort().is_trial ? 1 : effort().rounds;
    Times times;
    while (times.rounds.size() < wanted)
        times.rounds.push_back(subject(count));
    return times;
}

} // namespace zvbench
