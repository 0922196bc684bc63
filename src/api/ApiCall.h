#pragma once

#include <string>

#include "GenTL/GenTL.h"

#include "api/ProcessState.h"
#include "log/Log.h"

namespace zvgentl {

/// One call of an exported function, on its stack: its name, and the priority of its enter and exit lines.
/// Texts are formats; the function's name goes into the braces of every line.
class ApiCall {
public:
    explicit ApiCall(const char* function, Priority traffic = Priority::information) noexcept
        : m_function(function), m_traffic(traffic)
    {
    }

    const char* function() const noexcept { return m_function; }

    /// Logs at the traffic priority.
    ZV_PRINTF(3, 4) ZV_GUARDED_LINE void log(At at, const char* text, ...) const noexcept
    {
        if (is_logged(api_logger, m_traffic))
            ZV_WRITE_LINE(api_logger, m_traffic, m_function, at, text);
    }
    ZV_PRINTF(3, 4) ZV_GUARDED_LINE void log_info(At at, const char* text, ...) const noexcept
    {
        if (is_logged(api_logger, Priority::information))
            ZV_WRITE_LINE(api_logger, Priority::information, m_function, at, text);
    }
    ZV_PRINTF(3, 4) ZV_GUARDED_LINE void log_error(At at, const char* text, ...) const noexcept
    {
        if (is_logged(api_logger, Priority::error))
            ZV_WRITE_LINE(api_logger, Priority::error, m_function, at, text);
    }
    /// Logs at the traffic priority and answers GC_ERR_SUCCESS.
    ZV_PRINTF(3, 4) ZV_GUARDED_LINE GenTL::GC_ERROR succeed(At at, const char* text, ...) const noexcept
    {
        if (is_logged(api_logger, m_traffic))
            ZV_WRITE_LINE(api_logger, m_traffic, m_function, at, text);
        return GenTL::GC_ERR_SUCCESS;
    }
    /// Logs "Exit, Returning error <name> (0x%X)" as an error and answers the code.
    GenTL::GC_ERROR fail(At at, GenTL::GC_ERROR error) const noexcept;
    /// Makes `text` the process's last error and logs it as an error.
    void record_error(At at, const std::string& text) const;
    /// False, with an error line, before GCInitLib.
    bool library_is_open(At at) const noexcept
    {
        if (is_initialised())
            return true;
        log_error(at, "No preceding call to GCInitLib");
        return false;
    }

private:
    const char* m_function;
    Priority m_traffic;
};

/// For the catch-all of an exported function, the boundary that no exception crosses: logs the exception in
/// flight once and answers GC_ERR_ERROR.
GenTL::GC_ERROR after_exception(const char* function) noexcept;

} // namespace zvgentl
