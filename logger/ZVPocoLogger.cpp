#include <Poco/AutoPtr.h>

#include "zvlog/ZVLogger.h"

// Poco 1.7 takes the channel as a bare pointer, later versions as a counted one: both accept this.
ZVPocoLogger::ZVPocoLogger(const std::string& name, Poco::Channel* channel, int level)
    : Poco::Logger(name, Poco::AutoPtr<Poco::Channel>(channel, true), level)
{
}

ZVPocoLogger::~ZVPocoLogger() = default;
