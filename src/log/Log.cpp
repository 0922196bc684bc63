#include "log/Log.h"

#include <cstdio>
#include <string>

#include <Poco/Channel.h>
#include <Poco/Message.h>

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

    ZV_PRINTF(2, 3) void append(const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        append_list(format, arguments);
        va_end(arguments);
    }

    ZV_PRINTF(2, 0) void append_list(const char* format, va_list arguments)
    {
        const size_t room = sizeof m_text - m_length;
        // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has opened the list
        const int wanted = std::vsnprintf(m_text + m_length, room, format, arguments);
        if (wanted > 0)
            m_length += static_cast<size_t>(wanted) < room ? static_cast<size_t>(wanted) : room - 1;
    }

    const char* text() const { return m_text; }
    size_t length() const { return m_length; }

private:
    char m_text[4096]; // the terminating zero included
    size_t m_length{0};
};

/// Loggers may be named after their source file; a line shows the name without the extension.
int length_without_extension(const std::string& name)
{
    const size_t dot = name.rfind('.');
    return static_cast<int>(dot == std::string::npos ? name.size() : dot);
}

void open_line(Line& line, const ZVPocoLogger& logger, const char* function)
{
    line.append("thr%08X:", platform::thread_id());
    line.append("%.*s::", length_without_extension(logger.name()), logger.name().c_str());
    if (function != nullptr)
        line.append("{%s}", function);
}

void hand_over(const Line& line, ZVPocoLogger& logger, Priority priority) noexcept
{
    try {
        auto channel = logger.getChannel();
        if (channel)
            channel->log(Poco::Message(logger.name(), std::string(line.text(), line.length()),
                                       static_cast<Poco::Message::Priority>(priority)));
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
    line.append("[%d]: ", at.number);
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
