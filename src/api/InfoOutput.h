#pragma once

#include <cstddef>
#include <cstring>
#include <string>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoValue.h"
#include "api/arguments.h"

namespace zvgentl {

/// How much a query logs about a number that it hands over. Texts are logged the same way everywhere.
enum class NumberLog {
    silent,
    too_small, // a buffer that cannot hold it
    written,   // the value, once it was written
    both,
};

/// The three output arguments of an info query. Nothing else sets the type, compares sizes or copies bytes,
/// except the answer that takes an entry out of an event, and the type of a URL that is not available.
class InfoOutput {
public:
    InfoOutput(GenTL::INFO_DATATYPE* type, void* buffer, size_t* size) noexcept
        : m_type(given(type)), m_buffer(given(buffer)), m_size(given(size))
    {
    }

    /// Type or size not given.
    bool is_incomplete() const noexcept { return m_type == nullptr || m_size == nullptr; }
    /// Incomplete, or a buffer given with size 0.
    bool is_malformed() const noexcept { return is_incomplete() || (m_buffer != nullptr && *m_size == 0); }

    /// Hands a value over: sets the type, then copies a text by the string rule or a number by the fixed-size
    /// rule. GC_ERR_SUCCESS, GC_ERR_BUFFER_TOO_SMALL, or GC_ERR_INVALID_PARAMETER for a text without its
    /// terminating zero.
    GenTL::GC_ERROR write(const InfoValue& value, const ApiCall& call, int32_t command, NumberLog log) const
    {
        if (!value.is_string())
            return write(value.number(), call, command, log);
        *m_type = GenTL::INFO_DATATYPE_STRING;
        return write_text(value.text(), call);
    }
    GenTL::GC_ERROR write(const InfoNumber& value, const ApiCall& call, int32_t command, NumberLog log) const
    {
        *m_type = value.type;
        if (m_buffer == nullptr) {
            *m_size = value.width;
            return GenTL::GC_ERR_SUCCESS;
        }
        if (*m_size < value.width)
            return report_too_small(value.width, call, command, log);
        hand_over(value, m_type, m_buffer, m_size);
        if (log == NumberLog::written || log == NumberLog::both)
            log_written(value, call);
        return GenTL::GC_ERR_SUCCESS;
    }
    /// Writes a number to where there is room for it.
    static void hand_over(const InfoNumber& value, GenTL::INFO_DATATYPE* type, void* buffer,
                          size_t* size) noexcept
    {
        *type = value.type;
        // Little-endian: the low bytes come first. By cases, so that each is one instruction.
        if (value.width == 8)
            std::memcpy(buffer, &value.number, 8);
        else if (value.width == 4)
            std::memcpy(buffer, &value.number, 4);
        else
            std::memcpy(buffer, &value.number, 1);
        *size = value.width; // last, because a consumer may pass the same memory for both
    }

    /// Answers an unknown command: size 0, "info= %d" and GC_ERR_NOT_IMPLEMENTED with its exit line.
    GenTL::GC_ERROR refuse(const ApiCall& call, At diagnostic, At exit, int32_t command) const;

private:
    GenTL::GC_ERROR write_text(const std::string& text, const ApiCall& call) const;
    GenTL::GC_ERROR report_too_small(size_t width, const ApiCall& call, int32_t command, NumberLog log) const;

    static void log_written(const InfoNumber& value, const ApiCall& call);

    GenTL::INFO_DATATYPE* m_type;
    void* m_buffer; // null for a size query
    size_t* m_size;
};

} // namespace zvgentl
