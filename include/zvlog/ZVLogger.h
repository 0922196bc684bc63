/// \file ZVLogger.h
/// The logger half of the logger and settings library. No function throws.
#pragma once

#include "zvlog/Export.h"

#include <Poco/Logger.h>

#include <chrono>
#include <cstdint>
#include <string>

/// A logger as the library hands it out: name, numeric level (Poco's numbering) and channel. Only the library
/// makes and destroys these; callers read name and level and write messages to the channel. Any thread.
class ZVLOG_API ZVPocoLogger : public Poco::Logger {
protected:
    ZVPocoLogger(const std::string& name, Poco::Channel* channel, int level);
    ~ZVPocoLogger() override;
};

/// The logger of a name ("StreamModule.cpp"), the same object for the same name, alive as long as the
/// library; null when the library cannot help. `priority` 0xFFFFFFFF means the configured level. Level and
/// channel are fixed at the first call. Creates objects only: files are opened at the first line. `text` is
/// reserved and may be null.
extern "C" ZVLOG_API ZVPocoLogger* InitLogger(const char* text, const char* name, uint32_t priority);

/// Microseconds from `start` until now.
extern "C" ZVLOG_API int64_t ZVTimeElapsedUs(const std::chrono::steady_clock::time_point& start);
