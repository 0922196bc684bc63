#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace zvgentl::tool {

/// A line on the terminal that follows a grab; silent without a stream, and when it is not a terminal.
class Progress {
public:
    /// total 0: there is no end, only a count is shown.
    Progress(std::FILE* stream, std::uint64_t total);
    /// Clears the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::uint64_t frames, std::optional<std::uint64_t> lost);

private:
    using Clock = std::chrono::steady_clock;

    std::FILE* m_stream;
    std::uint64_t m_total;
    bool m_visible;
    bool m_shown{false};
    Clock::time_point m_start{Clock::now()};
    Clock::time_point m_next_show{m_start};
};

} // namespace zvgentl::tool
