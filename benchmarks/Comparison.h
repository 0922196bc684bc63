#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <vector>

namespace zvbench {

/// Something that is timed: does it `count` times and answers the nanoseconds that one took.
using Work = std::function<double(size_t count)>;

/// A work on the calling thread alone: its processor time counts, so that it does not matter when the system
/// lets another thread run.
Work computing(std::function<void(size_t count)> run);
/// A work whose elapsed time counts, from the first to the last.
Work elapsing(std::function<void(size_t count)> run);

/// Why a row has no result, although nothing is wrong with what it measures.
class NoResult : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How much is done for a result; the command line decides.
struct Effort {
    size_t rounds{15};
    bool is_trial{false}; // everything once, whatever the times: to see that it runs
};
Effort& effort();

/// The nanoseconds that one of a work takes, over the rounds of a comparison.
struct Times {
    std::vector<double> rounds;

    double median() const;
    double fastest() const;
    /// From the first to the last quarter of the rounds, as a part of the median.
    double spread() const;
};

/// A subject against its anchor: what the same machine, at the same moment, needs for the least that has to
/// be done.
struct Comparison {
    Times anchor;
    Times subject;
    Times ratio;
    /// Rounds that did not count, because of what the anchor took.
    size_t void_rounds{0};
};

constexpr double same_core{0.03};    // how far the anchor may disagree with itself in a round
constexpr double across_cores{0.08}; // the same with a thread on each core
constexpr double other_rounds{0.5};  // how far it may exceed its fastest round

/// What a comparison takes for a round, and for a good one.
struct Limits {
    double tolerance{same_core};
    size_t count{0}; // of a round; 0: as many as take a few milliseconds
    std::chrono::seconds patience{20};
};

/// Times anchor, subject and anchor again, back to back, for as many rounds as the effort says. Machines are
/// shared: a round whose anchors disagree by more than the tolerance is repeated, and so is one whose anchor
/// is far slower than in other rounds. Throws NoResult when the time for that is used up.
Comparison compare(const Work& anchor, const Work& subject, const Limits& limits = {});

/// Times something that has no anchor: `count` of it in each of a few rounds.
Times time_alone(const Work& subject, size_t count);

} // namespace zvbench
