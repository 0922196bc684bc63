#include "zvgentl/Progress.h"

#include <algorithm>
#include <string>

#include <fmt/core.h>

#include "platform/terminal.h"

namespace zvgentl::tool {

namespace {

constexpr auto interval = std::chrono::milliseconds(100);
constexpr const char* clear_line = "\r\x1b[K";

std::string bar(std::uint64_t done, std::uint64_t total)
{
    constexpr std::uint64_t width = 30;
    const auto filled = static_cast<std::size_t>(std::min(done, total) * width / total);
    return fmt::format("[{:<{}}] {}/{}", std::string(filled, '#'), width, done, total);
}

} // namespace

Progress::Progress(std::FILE* stream, std::uint64_t total)
    : m_stream(stream), m_total(total), m_visible(stream != nullptr && platform::is_terminal(stream))
{
}

Progress::~Progress()
{
    if (!m_shown)
        return;
    std::fputs(clear_line, m_stream);
    std::fflush(m_stream);
}

void Progress::show(std::uint64_t frames, std::optional<std::uint64_t> lost)
{
    const auto now = Clock::now();
    if (!m_visible || now < m_next_show)
        return;
    m_next_show = now + interval;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    std::string text = m_total > 0 ? bar(frames, m_total) : std::to_string(frames);
    if (seconds > 0)
        text += fmt::format(" frames, {:.1f}/s", static_cast<double>(frames) / seconds);
    if (lost)
        text += fmt::format(", {} lost", *lost);
    fmt::print(m_stream, "{}{}", clear_line, text);
    std::fflush(m_stream);
    m_shown = true;
}

} // namespace zvgentl::tool
