#include "api/ApiCall.h"

#include <exception>

#include "api/ProcessState.h"
#include "api/error_names.h"

namespace zvgentl {

using namespace GenTL;

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
