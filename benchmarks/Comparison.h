#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zvbench {

/// Something that is timed: runs `count` times what it is about.
using Work = std::function<void(size_t count)>;

/// The nanoseconds that one of a work takes, over the rounds of a comparison.
struct Times {
    std::vector<double> rounds;

    double median() const;
    /// From the first to the last quarter of the rounds, as a part of the median.
    double spread() const;
};

/// A subject against its anchor: what the same machine, at the same moment, needs for the least that has to
/// be done.
struct Comparison {
    Times anchor;
    Times subject;
    Times ratio;
    /// Rounds that did not count, because the anchor before and after the subject disagreed.
    size_t void_rounds{0};
};

constexpr double same_core{0.03};    // how far the anchor may disagree with itself
constexpr double across_cores{0.08}; // the same with a thread on each core

/// Times anchor, subject and anchor again, back to back, for 15 rounds that count. Machines are shared: a
/// round whose anchors disagree by more than `tolerance` is repeated, up to 20 times as many rounds. Throws
/// std::runtime_error when the machine is too busy for that.
Comparison compare(const Work& anchor, const Work& subject, double tolerance = same_core);

} // namespace zvbench
