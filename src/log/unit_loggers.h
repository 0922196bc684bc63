#pragma once

class ZVPocoLogger;

namespace zvgentl {

/// One logger per source unit, made while the library is loaded and never released by us. Each may be null,
/// when the logger library could not make it; every log entry point then does nothing.
extern ZVPocoLogger* const api_logger; // the exported functions, with the interface and device modules
extern ZVPocoLogger* const system_module_logger;
extern ZVPocoLogger* const buffer_module_logger;
extern ZVPocoLogger* const camera_module_logger;
extern ZVPocoLogger* const event_module_logger;
extern ZVPocoLogger* const stream_module_logger;

} // namespace zvgentl
