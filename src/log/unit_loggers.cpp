#include "log/unit_loggers.h"

#include "zvlog/ZVLogger.h"

namespace zvgentl {

namespace {

constexpr uint32_t configured_level = 0xFFFFFFFF;

ZVPocoLogger* logger_of(const char* source_file)
{
    return InitLogger(nullptr, source_file, configured_level);
}

} // namespace

ZVPocoLogger* const api_logger = logger_of("ZVGRLibGenTL.cpp");
ZVPocoLogger* const system_module_logger = logger_of("SystemModule.cpp");
ZVPocoLogger* const buffer_module_logger = logger_of("BufferModule.cpp");
ZVPocoLogger* const camera_module_logger = logger_of("CameraModule.cpp");
ZVPocoLogger* const event_module_logger = logger_of("EventModule.cpp");
ZVPocoLogger* const stream_module_logger = logger_of("StreamModule.cpp");

} // namespace zvgentl
