#pragma once

#include <cstddef>
#include <string>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoValue.h"

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
    InfoOutput(GenTL::INFO_DATATYPE* type, void* buffer, size_t* size) noexcept;

    /// Type or size not given.
    bool is_incomplete() const noexcept;
    /// Incomplete, or a buffer given with size 0.
    bool is_malformed() const noexcept;

    /// Hands a value over: sets the type, then copies a text by the string rule or a number by the fixed-size
    /// rule. GC_ERR_SUCCESS, GC_ERR_BUFFER_TOO_SMALL, or GC_ERR_INVALID_PARAMETER for a text without its
    /// terminating zero.
    GenTL::GC_ERROR write(const InfoValue& value, const ApiCall& call, int32_t command, NumberLog log) const;

    /// Answers an unknown command: size 0, "info= %d" and GC_ERR_NOT_IMPLEMENTED with its exit line.
    GenTL::GC_ERROR refuse(const ApiCall& call, At diagnostic, At exit, int32_t command) const;

private:
    GenTL::GC_ERROR write_text(const std::string& text, const ApiCall& call) const;
    GenTL::GC_ERROR write_number(const InfoValue& value, const ApiCall& call, int32_t command,
                                 NumberLog log) const;

    GenTL::INFO_DATATYPE* m_type;
    void* m_buffer; // null for a size query
    size_t* m_size;
};

} // namespace zvgentl
