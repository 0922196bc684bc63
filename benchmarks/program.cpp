#include "benchmarks/program.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

using zvbench::Row;

/// Has a name without decorations, for callgrind.
extern "C" [[gnu::noinline]] void counted_work(const std::function<void(size_t)>& work, size_t count)
{
    work(count);
}

namespace zvbench {

namespace {

struct Options {
    std::string json;
    std::optional<size_t> row;
    size_t instructions{0};
    bool is_list{false};
};

/// The row as the table and the JSON file have it.
class Line {
public:
    explicit Line(const Row& row) : m_row{row}
    {
        try {
            m_result = row.measure();
            m_verdict = is_reached(row.gate, m_result->measured) ? "passed" : "missed";
            if (!row.gate.limit)
                m_verdict = "-";
        } catch (const NoResult& reason) {
            m_verdict = std::string{"no result: "} + reason.what();
        }
    }

    bool is_missed() const { return m_verdict == "missed"; }

    static void print_head()
    {
        std::printf("%-66s %-24s %12s %12s %12s %7s %12s  %s\n", "what", "anchor", "anchor/ns", "subject/ns",
                    "measured", "spread", "gate", "verdict");
    }

    void print() const
    {
        std::printf("%-66s %-24s", m_row.name.c_str(), m_row.anchor.empty() ? "-" : m_row.anchor.c_str());
        if (m_result) {
            print_time(m_result->anchor_ns);
            print_time(m_result->subject_ns);
            std::printf(" %12s %6.1f%%", with_unit(m_result->measured).c_str(), 100 * m_result->spread);
        } else {
            std::printf(" %12s %12s %12s %7s", "-", "-", "-", "-");
        }
        std::printf(" %12s  %s\n", gate_text().c_str(), m_verdict.c_str());
        std::fflush(stdout);
    }

    nlohmann::json json() const
    {
        nlohmann::json line{{"name", m_row.name},
                            {"anchor", m_row.anchor},
                            {"unit", m_row.gate.unit},
                            {"verdict", m_verdict}};
        if (m_row.gate.limit)
            line["gate"] = {{"limit", *m_row.gate.limit},
                            {"bound", m_row.gate.bound == Gate::Bound::at_least ? "at least" : "at most"}};
        if (m_result) {
            line["measured"] = m_result->measured;
            line["spread"] = m_result->spread;
            line["void_rounds"] = m_result->void_rounds;
            if (m_result->anchor_ns)
                line["anchor_ns"] = *m_result->anchor_ns;
            if (m_result->subject_ns)
                line["subject_ns"] = *m_result->subject_ns;
        }
        return line;
    }

private:
    static bool is_reached(const Gate& gate, double measured)
    {
        const double limit = gate.limit.value_or(measured);
        return gate.bound == Gate::Bound::at_least ? measured >= limit : measured <= limit;
    }

    std::string gate_text() const
    {
        if (!m_row.gate.limit)
            return "-";
        return (m_row.gate.bound == Gate::Bound::at_least ? ">= " : "<= ") + with_unit(*m_row.gate.limit);
    }

    static void print_time(const std::optional<double>& nanoseconds)
    {
        if (nanoseconds)
            std::printf(" %12.1f", *nanoseconds);
        else
            std::printf(" %12s", "-");
    }

    std::string with_unit(double number) const
    {
        char text[64];
        const char* const blank = m_row.gate.unit == "x" ? "" : " ";
        std::snprintf(text, sizeof text, "%.2f%s%s", number, blank, m_row.gate.unit.c_str());
        return text;
    }

    const Row& m_row;
    std::optional<Result> m_result;
    std::string m_verdict;
};

void print_list(const std::vector<Row>& rows)
{
    for (size_t i = 0; i < rows.size(); ++i)
        std::printf("%3zu  %s\n", i, rows[i].name.c_str());
}

/// False when a gate is missed.
bool measure(const std::vector<Row>& rows, const Options& options)
{
    bool is_good = true;
    nlohmann::json lines = nlohmann::json::array();
    Line::print_head();
    std::fflush(stdout);
    for (size_t i = 0; i < rows.size(); ++i) {
        if (options.row && *options.row != i)
            continue;
        const Line line{rows[i]};
        line.print();
        lines.push_back(line.json());
        is_good = is_good && !line.is_missed();
    }
    if (!options.json.empty() && !(std::ofstream{options.json} << lines.dump(2) << '\n').flush())
        throw std::runtime_error{"cannot write " + options.json};
    return is_good;
}

void count(const Row& row, size_t count)
{
    if (!row.count)
        throw std::runtime_error{"there are no instructions to count for '" + row.name + "'"};
    row.count(count);
}

} // namespace

Result ratio_of(const Comparison& comparison)
{
    return {comparison.ratio.median(), comparison.anchor.median(), comparison.subject.median(),
            comparison.ratio.spread(), comparison.void_rounds};
}

Result speed_of(const Comparison& comparison)
{
    Result result = ratio_of(comparison);
    result.measured = 1 / result.measured;
    return result;
}

Result growth_of(const Comparison& small, const Comparison& large)
{
    return {large.ratio.median() / small.ratio.median(), small.subject.median(), large.subject.median(),
            std::max(small.ratio.spread(), large.ratio.spread()), small.void_rounds + large.void_rounds};
}

Result fastest_of(const Times& times, double nanoseconds_per_unit)
{
    return {times.fastest() / nanoseconds_per_unit, std::nullopt, times.fastest(), times.spread(), 0};
}

void count_instructions(const std::function<void(size_t count)>& work, size_t count)
{
    work(count); // first times do not count
    counted_work(work, count);
}

void fail(const char* what) { throw std::runtime_error{what}; }

int run_program(int argc, char** argv, const char* about, const std::vector<Row>& rows)
try {
    CLI::App app{about};
    Options options;
    app.add_option("--json", options.json, "file for the results");
    app.add_option("--row", options.row, "measure only this row; --list has the numbers")
        ->check(CLI::Range(size_t{0}, rows.size() - 1));
    app.add_flag("--list", options.is_list, "list the rows");
    app.add_option("--rounds", effort().rounds, "rounds that count for a result")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_flag("--trial", effort().is_trial, "do everything once, to see that it runs; judge nothing");
    app.add_option("--count-instructions", options.instructions,
                   "under callgrind: do the row's work so often");
    CLI11_PARSE(app, argc, argv);

    if (options.is_list) {
        print_list(rows);
        return EXIT_SUCCESS;
    }
    if (options.instructions != 0) {
        count(rows[options.row.value_or(0)], options.instructions);
        return EXIT_SUCCESS;
    }
    return measure(rows, options) || effort().is_trial ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& error) {
    std::cerr << argv[0] << ": " << error.what() << '\n';
    return 2;
}

} // namespace zvbench
