#include "simulator/Log.h"

#include <cstdint>

#include "zvlog/ZVLogger.h"

namespace zvsim {

namespace {

constexpr uint32_t configured_level = 0xFFFFFFFF;

/// Null when the logger library cannot help.
ZVPocoLogger* logger() { return InitLogger(nullptr, "ZVGRLib.cpp", configured_level); }

} // namespace

void log_information(const std::string& text)
{
    if (ZVPocoLogger* const target = logger())
        target->information(text);
}

void log_error(const std::string& text)
{
    if (ZVPocoLogger* const target = logger())
        target->error(text);
}

void log_warning(const std::string& text)
{
    if (ZVPocoLogger* const target = logger())
        target->warning(text);
}

void log_failed_call(const char* function, const char* problem) noexcept
{
    try {
        if (ZVPocoLogger* const target = logger())
            target->error(std::string{function} + " failed: " + problem);
    } catch (...) { // out of memory; the caller still gets its failure
    }
}

} // namespace zvsim
