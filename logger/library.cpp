#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <Poco/Message.h>

#include "zvlog/ZVLogger.h"
#include "zvlog/ZVReports.h"
#include "zvlog/ZVSettings.h"

#include "logger/LoggerRegistry.h"
#include "logger/SettingsStore.h"

namespace {

void warn_about_settings(const std::string& text);

// Lives as long as the library. What is linked to the library is initialised later and destroyed earlier, so
// it has its loggers for the whole of its life.
struct Library {
    std::mutex mutex; // guards the making of `loggers`, and `reports`
    std::unique_ptr<zvlog::LoggerRegistry> loggers;
    std::map<std::string, std::string> reports; // by source
    zvlog::SettingsStore settings{zvlog::settings_places, warn_about_settings};
};

Library library;

zvlog::LoggerRegistry& loggers()
{
    const std::lock_guard lock(library.mutex);
    if (!library.loggers)
        library.loggers = std::make_unique<zvlog::LoggerRegistry>(zvlog::logger_places());
    return *library.loggers;
}

void warn_about_settings(const std::string& text)
{
    ZVPocoLogger* const logger = InitLogger(nullptr, "ZVSettings", zvlog::configured_level);
    if (logger != nullptr)
        logger->log(Poco::Message("ZVSettings", "ZVSettings::" + text, Poco::Message::PRIO_WARNING));
}

} // namespace

ZVPocoLogger* InitLogger(const char* /*text*/, const char* name, uint32_t priority)
try {
    if (name == nullptr || *name == '\0')
        return nullptr;
    return loggers().logger(name, priority);
} catch (...) {
    return nullptr; // out of memory: the caller has no log
}

int64_t ZVTimeElapsedUs(const std::chrono::steady_clock::time_point& start)
{
    const auto elapsed = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count();
}

uint32_t ZVSettings::InitInteger(uint32_t feature_type, const char* key, uint32_t default_value,
                                 const char* description)
try {
    if (feature_type != zv_feature_integer || key == nullptr)
        return default_value;
    return library.settings.value_or_add(key, default_value, description == nullptr ? "" : description);
} catch (...) {
    return default_value;
}

bool ZVSettings::Get(uint32_t scope, uint32_t feature_type, const zvstring& key, uint32_t& value,
                     uint32_t default_value, bool /*flag*/, const char* /*description*/)
try {
    value = default_value;
    if (scope != zv_scope_machine || feature_type != zv_feature_integer)
        return false;
    const auto stored = library.settings.value(key.c_str());
    value = stored.value_or(default_value);
    return stored.has_value();
} catch (...) {
    value = default_value;
    return false;
}

void ZVReport(const char* source, const char* text)
try {
    if (source == nullptr || *source == '\0')
        return;
    const std::lock_guard lock(library.mutex);
    if (text == nullptr || *text == '\0')
        library.reports.erase(source);
    else
        library.reports[source] = text;
} catch (...) {
    // Without memory there is no report.
}

uint64_t ZVReportedText(char* text, uint64_t size)
try {
    std::string all;
    {
        const std::lock_guard lock(library.mutex);
        for (const auto& [source, report] : library.reports)
            all += (all.empty() ? "" : "\n") + report;
    }
    const uint64_t needed = all.size() + 1;
    if (text != nullptr && size > 0)
        text[all.copy(text, std::min(all.size(), static_cast<size_t>(size) - 1))] = '\0';
    return needed;
} catch (...) {
    if (text != nullptr && size > 0)
        *text = '\0';
    return 1;
}
