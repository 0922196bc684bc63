#include "simulator/Log.h"

#include <cstdint>

#include "zvlog/ZVLogger.h"
#include "zvlog/ZVReports.h"

#include "platform/DynamicLibrary.h"

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

void report(const std::string& text)
{
    // Other logger libraries need not have it.
    static const auto take =
        reinterpret_cast<decltype(&ZVReport)>(platform::find_needed("ZVLogger", "ZVReport"));
    if (take != nullptr)
        take("ZVGRLib", text.c_str());
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
