#include "gentl/Error.h"

#include <algorithm>
#include <iterator>

#include "platform/visible_text.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

struct ErrorRow {
    GC_ERROR code;
    const char* name;
};

constexpr ErrorRow error_rows[] = {
    {GC_ERR_SUCCESS, "GC_ERR_SUCCESS"},
    {GC_ERR_ERROR, "GC_ERR_ERROR"},
    {GC_ERR_NOT_INITIALIZED, "GC_ERR_NOT_INITIALIZED"},
    {GC_ERR_NOT_IMPLEMENTED, "GC_ERR_NOT_IMPLEMENTED"},
    {GC_ERR_RESOURCE_IN_USE, "GC_ERR_RESOURCE_IN_USE"},
    {GC_ERR_ACCESS_DENIED, "GC_ERR_ACCESS_DENIED"},
    {GC_ERR_INVALID_HANDLE, "GC_ERR_INVALID_HANDLE"},
    {GC_ERR_INVALID_ID, "GC_ERR_INVALID_ID"},
    {GC_ERR_NO_DATA, "GC_ERR_NO_DATA"},
    {GC_ERR_INVALID_PARAMETER, "GC_ERR_INVALID_PARAMETER"},
    {GC_ERR_IO, "GC_ERR_IO"},
    {GC_ERR_TIMEOUT, "GC_ERR_TIMEOUT"},
    {GC_ERR_ABORT, "GC_ERR_ABORT"},
    {GC_ERR_INVALID_BUFFER, "GC_ERR_INVALID_BUFFER"},
    {GC_ERR_NOT_AVAILABLE, "GC_ERR_NOT_AVAILABLE"},
    {GC_ERR_INVALID_ADDRESS, "GC_ERR_INVALID_ADDRESS"},
    {GC_ERR_BUFFER_TOO_SMALL, "GC_ERR_BUFFER_TOO_SMALL"},
    {GC_ERR_INVALID_INDEX, "GC_ERR_INVALID_INDEX"},
    {GC_ERR_PARSING_CHUNK_DATA, "GC_ERR_PARSING_CHUNK_DATA"},
    {GC_ERR_INVALID_VALUE, "GC_ERR_INVALID_VALUE"},
    {GC_ERR_RESOURCE_EXHAUSTED, "GC_ERR_RESOURCE_EXHAUSTED"},
    {GC_ERR_OUT_OF_MEMORY, "GC_ERR_OUT_OF_MEMORY"},
    {GC_ERR_BUSY, "GC_ERR_BUSY"},
};

std::string describe(GC_ERROR code, const std::string& function, const std::string& text)
{
    const std::string what =
        function + " failed with " + error_name(code) + " (" + std::to_string(code) + ")";
    return text.empty() ? what : what + ": " + platform::visible(text);
}

} // namespace

std::string error_name(GC_ERROR code)
{
    const auto* const row =
        std::find_if(std::begin(error_rows), std::end(error_rows),
                     [code](const ErrorRow& candidate) { return candidate.code == code; });
    return row == std::end(error_rows) ? "error " + std::to_string(code) : row->name;
}

Error::Error(GC_ERROR code, const std::string& function, const std::string& text)
    : std::runtime_error(describe(code, function, text)), m_code(code)
{
}

} // namespace zvgentl::tool
