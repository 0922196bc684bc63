#include "api/InfoOutput.h"

#include <algorithm>
#include <cstring>

#include "api/arguments.h"

namespace zvgentl {

using namespace GenTL;

namespace {

bool logs_too_small(NumberLog log) { return log == NumberLog::too_small || log == NumberLog::both; }
bool logs_written(NumberLog log) { return log == NumberLog::written || log == NumberLog::both; }

void log_written(const InfoValue& value, const ApiCall& call)
{
    const auto number = static_cast<unsigned long long>(value.number());
    switch (value.type()) {
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

} // namespace

InfoOutput::InfoOutput(INFO_DATATYPE* type, void* buffer, size_t* size) noexcept
    : m_type(given(type)), m_buffer(given(buffer)), m_size(given(size))
{
}

bool InfoOutput::is_incomplete() const noexcept { return m_type == nullptr || m_size == nullptr; }

bool InfoOutput::is_malformed() const noexcept
{
    return is_incomplete() || (m_buffer != nullptr && *m_size == 0);
}

GC_ERROR InfoOutput::write(const InfoValue& value, const ApiCall& call, int32_t command, NumberLog log) const
{
    *m_type = value.type();
    return value.is_string() ? write_text(value.text(), call) : write_number(value, call, command, log);
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

GC_ERROR InfoOutput::write_number(const InfoValue& value, const ApiCall& call, int32_t command,
                                  NumberLog log) const
{
    const size_t room = *m_size;
    if (m_buffer == nullptr) {
        *m_size = value.width();
        return GC_ERR_SUCCESS;
    }
    if (room < value.width()) {
        *m_size = value.width();
        if (logs_too_small(log)) {
            call.log_error(At{252}, "info= %d, size=%u(expected=%u)", command, static_cast<unsigned>(room),
                           static_cast<unsigned>(value.width()));
            call.fail(At{254}, GC_ERR_BUFFER_TOO_SMALL);
        }
        return GC_ERR_BUFFER_TOO_SMALL;
    }
    const uint64_t number = value.number();
    std::memcpy(m_buffer, &number, value.width()); // little-endian: the low bytes come first
    // Last, because a consumer may pass the same memory for both.
    *m_size = value.width();
    if (logs_written(log))
        log_written(value, call);
    return GC_ERR_SUCCESS;
}

GC_ERROR InfoOutput::refuse(const ApiCall& call, At diagnostic, At exit, int32_t command) const
{
    *m_size = 0;
    call.log_error(diagnostic, "info= %d", command);
    return call.fail(exit, GC_ERR_NOT_IMPLEMENTED);
}

} // namespace zvgentl
