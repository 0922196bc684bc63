#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/Comparison.h"

namespace zvbench {

/// What a row found.
struct Result {
    double measured{0}; // what the gate is about: a ratio, or a number in the gate's unit
    std::optional<double> anchor_ns{};
    std::optional<double> subject_ns{};
    double spread{0};
    size_t void_rounds{0};
};

/// The subject's time as a multiple of the anchor's.
Result ratio_of(const Comparison& comparison);
/// The subject's speed as a multiple of the anchor's.
Result speed_of(const Comparison& comparison);
/// By what the subject's time grows from a small to a large configuration, each compared with one anchor that
/// stays the same, so that the machine's own changes cancel out.
Result growth_of(const Comparison& small, const Comparison& large);
/// The fastest round: what the machine can do when it is left alone.
Result fastest_of(const Times& times, double nanoseconds_per_unit);

/// What a row has to reach. Without a limit the row only informs.
struct Gate {
    enum class Bound { at_most, at_least };

    std::optional<double> limit;
    std::string unit{"x"}; // a ratio
    Bound bound{Bound::at_most};
};

/// A line of the table.
struct Row {
    std::string name;
    std::string anchor; // what the subject is compared with; may be empty
    Gate gate;
    std::function<Result()> measure;
    /// Runs the row's work that often for callgrind, by count_instructions(). Empty where this means nothing.
    std::function<void(size_t count)> count{};
};

/// Does the work a first time, then once more with `count` in a function that callgrind can be told:
/// --toggle-collect=counted_work
void count_instructions(const std::function<void(size_t count)>& work, size_t count);

/// Throws std::runtime_error with these words.
[[noreturn]] void fail(const char* what);
/// The same unless it is right. Costs what is timed no more than a comparison.
inline void require(bool is_right, const char* what)
{
    if (!is_right)
        fail(what);
}

/// The main function of every program of this folder: reads the command line, measures the rows and prints
/// them. The exit code: 0 all gates are passed, 1 one is missed, 2 something failed.
int run_program(int argc, char** argv, const char* about, const std::vector<Row>& rows);

} // namespace zvbench
