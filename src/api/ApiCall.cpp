#include "api/ApiCall.h"

#include <cstdarg>
#include <exception>

#include "api/ProcessState.h"
#include "api/error_names.h"
#include "log/Log.h"

namespace zvgentl {

using namespace GenTL;

void ApiCall::log(At at, const char* text, ...) const noexcept
{
    va_list arguments;
    va_start(arguments, text);
    write_line(api_logger, m_traffic, m_function, at, text, arguments);
    va_end(arguments);
}

void ApiCall::log_info(At at, const char* text, ...) const noexcept
{
    va_list arguments;
    va_start(arguments, text);
    write_line(api_logger, Priority::information, m_function, at, text, arguments);
    va_end(arguments);
}

void ApiCall::log_error(At at, const char* text, ...) const noexcept
{
    va_list arguments;
    va_start(arguments, text);
    write_line(api_logger, Priority::error, m_function, at, text, arguments);
    va_end(arguments);
}

GC_ERROR ApiCall::succeed(At at, const char* text, ...) const noexcept
{
    va_list arguments;
    va_start(arguments, text);
    write_line(api_logger, m_traffic, m_function, at, text, arguments);
    va_end(arguments);
    return GC_ERR_SUCCESS;
}

GC_ERROR ApiCall::fail(At at, GC_ERROR error) const noexcept
{
    log_error(at, "Exit, Returning error %s (0x%X)", error_name(error), static_cast<unsigned>(error));
    return error;
}

void ApiCall::record_error(At at, const std::string& text) const
{
    set_last_error(text);
    log_error(at, "%s", text.c_str());
}

bool ApiCall::library_is_open(At at) const noexcept
{
    if (is_initialised())
        return true;
    log_error(at, "No preceding call to GCInitLib");
    return false;
}

GC_ERROR after_exception(const char* function) noexcept
{
    const ApiCall call{function};
    try {
        throw;
    } catch (const std::exception& exception) {
        call.log_error(At{110}, "Exit, Returning error GC_ERR_ERROR (0x%X), exception: %s",
                       static_cast<unsigned>(GC_ERR_ERROR), exception.what());
    } catch (...) {
        call.log_error(At{113}, "Exit, Returning error GC_ERR_ERROR (0x%X), unknown exception",
                       static_cast<unsigned>(GC_ERR_ERROR));
    }
    return GC_ERR_ERROR;
}

} // namespace zvgentl
