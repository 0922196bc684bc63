#include "api/InfoOutput.h"

#include <algorithm>
#include <cstring>

namespace zvgentl {

using namespace GenTL;

void InfoOutput::log_written(const InfoNumber& value, const ApiCall& call)
{
    const auto number = static_cast<unsigned long long>(value.number);
    switch (value.type) {
    case INFO_DATATYPE_INT32:
        call.log(At{210}, "Type INFO_DATATYPE_INT32: value=%d", static_cast<int>(number));
        break;
    case INFO_DATATYPE_BOOL8:
        call.log(At{213}, "Type INFO_DATATYPE_BOOL8: value=%d", static_cast<int>(number));
        break;
    case INFO_DATATYPE_UINT64:
        call.log(At{216}, "Type INFO_DATATYPE_UINT64: value=%llu", number);
        break;
    default: // no other type is handed over by a query that logs
        call.log(At{219}, "Type INFO_DATATYPE_SIZET: value=%llu", number);
        break;
    }
}

GC_ERROR InfoOutput::write_text(const std::string& text, const ApiCall& call) const
{
    const size_t needed = text.size() + 1;
    if (m_buffer == nullptr) {
        *m_size = needed;
        return GC_ERR_SUCCESS;
    }
    const size_t room = *m_size;
    const size_t copied = std::min(room, needed);
    std::memcpy(m_buffer, text.c_str(), copied);
    // Contract: also on failure, not the size needed. Pinned by StringRule.ReportsTheBytesCopied.
    *m_size = copied;
    if (needed <= room)
        return GC_ERR_SUCCESS;

    const bool lacks_only_the_zero = room == text.size() || room == 0;
    const std::string sizes = std::to_string(room) + "/" + std::to_string(needed) + ")";
    const std::string problem =
        lacks_only_the_zero
            ? " - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination ("
            : " - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (";
    const GC_ERROR error = lacks_only_the_zero ? GC_ERR_INVALID_PARAMETER : GC_ERR_BUFFER_TOO_SMALL;
    call.record_error(At{240}, call.function() + problem + sizes);
    call.log_error(At{241}, "Exit, Returning error ret (0x%X)", static_cast<unsigned>(error));
    return error;
}

GC_ERROR InfoOutput::report_too_small(size_t width, const ApiCall& call, int32_t command, NumberLog log) const
{
    const size_t room = *m_size;
    *m_size = width;
    if (log == NumberLog::too_small || log == NumberLog::both) {
        call.log_error(At{252}, "info= %d, size=%u(expected=%u)", command, static_cast<unsigned>(room),
                       static_cast<unsigned>(width));
        call.fail(At{254}, GC_ERR_BUFFER_TOO_SMALL);
    }
    return GC_ERR_BUFFER_TOO_SMALL;
}

GC_ERROR InfoOutput::refuse(const ApiCall& call, At diagnostic, At exit, int32_t command) const
{
    *m_size = 0;
    call.log_error(diagnostic, "info= %d", command);
    return call.fail(exit, GC_ERR_NOT_IMPLEMENTED);
}

} // namespace zvgentl
