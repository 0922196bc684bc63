#include "log/Log.h"

#include <charconv>
#include <cstdio>
#include <string_view>
#include <utility>

#include <Poco/Channel.h>

#include "log/KeptMessages.h"
#include "platform/process.h"

namespace zvgentl {

namespace {

constexpr uint32_t configured_level = 0xFFFFFFFF;

ZVPocoLogger* logger_of(const char* source_file)
{
    return InitLogger(nullptr, source_file, configured_level);
}

/// A text that grows to 4095 characters and is then cut.
class Line {
public:
    Line() { m_text[0] = '\0'; }

    ZV_PRINTF(2, 0) void append_list(const char* format, va_list arguments)
    {
        const size_t room = sizeof m_text - m_length;
        // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has opened the list
        const int wanted = std::vsnprintf(m_text + m_length, room, format, arguments);
        if (wanted > 0)
            m_length += static_cast<size_t>(wanted) < room ? static_cast<size_t>(wanted) : room - 1;
    }

    // Formatting what needs no format would take longer than all the rest of a line.
    void append(std::string_view text)
    {
        const size_t room = sizeof m_text - 1 - m_length;
        m_length += text.copy(m_text + m_length, room);
        m_text[m_length] = '\0';
    }

    const char* text() const { return m_text; }
    size_t length() const { return m_length; }

private:
    char m_text[4096]; // the terminating zero included
    size_t m_length{0};
};

/// Loggers may be named after their source file; a line shows the name without the extension.
std::string_view without_extension(std::string_view name) { return name.substr(0, name.rfind('.')); }

void open_line(Line& line, const ZVPocoLogger& logger, const char* function)
{
    char thread[] = "thr00000000:";
    uint32_t rest = platform::thread_id();
    for (char* digit = thread + 10; rest != 0; rest >>= 4U)
        *digit-- = "0123456789ABCDEF"[rest & 0xFU];
    line.append(thread);
    line.append(without_extension(logger.name()));
    line.append("::");
    if (function != nullptr) {
        line.append("{");
        line.append(function);
        line.append("}");
    }
}

void append_call_site(Line& line, At at)
{
    char number[16];
    const char* const end = std::to_chars(number, number + sizeof number, at.number).ptr;
    line.append("[");
    line.append({number, static_cast<size_t>(end - number)});
    line.append("]: ");
}

KeptMessages kept_messages;

void hand_over(const Line& line, ZVPocoLogger& logger, Priority priority) noexcept
{
    try {
        auto channel = logger.getChannel();
        if (!channel)
            return;
        auto kept = kept_messages.take();
        kept->text.assign(line.text(), line.length());
        kept->message.setText(kept->text);
        kept->message.setSource(logger.name());
        kept->message.setPriority(static_cast<Poco::Message::Priority>(priority));
        channel->log(kept->message);
        kept_messages.give_back(std::move(kept));
    } catch (...) { // a full disk must not fail the call that wanted to log
        return;
    }
}

} // namespace

ZVPocoLogger* const api_logger = logger_of("ZVGRLibGenTL.cpp");
ZVPocoLogger* const system_module_logger = logger_of("SystemModule.cpp");
ZVPocoLogger* const buffer_module_logger = logger_of("BufferModule.cpp");
ZVPocoLogger* const camera_module_logger = logger_of("CameraModule.cpp");
ZVPocoLogger* const event_module_logger = logger_of("EventModule.cpp");
ZVPocoLogger* const stream_module_logger = logger_of("StreamModule.cpp");

void write_line_list(ZVPocoLogger* logger, Priority priority, const char* function, At at, const char* format,
                     va_list arguments) noexcept
{
    if (format == nullptr)
        return;
    Line line;
    open_line(line, *logger, function);
    append_call_site(line, at);
    line.append_list(format, arguments);
    hand_over(line, *logger, priority);
}

void write_line(ZVPocoLogger* logger, Priority priority, const char* function, At at, const char* format,
                ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    write_line_list(logger, priority, function, at, format, arguments);
    va_end(arguments);
}

void write_bare_line(ZVPocoLogger* logger, Priority priority, const char* function, const char* format,
                     ...) noexcept
{
    if (!is_logged(logger, priority) || format == nullptr)
        return;
    Line line;
    open_line(line, *logger, function);
    va_list arguments;
    va_start(arguments, format);
    line.append_list(format, arguments);
    va_end(arguments);
    hand_over(line, *logger, priority);
}

} // namespace zvgentl
