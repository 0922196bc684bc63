#pragma once

#include <string>

#include "GenTL/GenTL.h"

#include "support/fixtures.h"

// Log lines that many exported functions write.

namespace zvtest {

inline ExpectedLine info_line(const std::string& message) { return {Priority::information, message}; }
inline ExpectedLine error_line(const std::string& message) { return {Priority::error, message}; }
/// What the scope timer of three functions writes last.
inline ExpectedLine duration_line() { return info_line("duration: 12 usec"); }

/// A code as lines print it behind "0x".
inline std::string code_text(GenTL::GC_ERROR code) { return low_hex(static_cast<uint32_t>(code)); }

inline ExpectedLine failed_with(const std::string& name, GenTL::GC_ERROR code)
{
    return error_line("Exit, Returning error " + name + " (0x" + code_text(code) + ")");
}
/// `FAILED_WITH(GC_ERR_INVALID_ID)`: the exit line of the code.
#define FAILED_WITH(code) ::zvtest::failed_with(#code, code)

/// The exit line of a text that did not fit, which names no code.
inline ExpectedLine text_failed_with(GenTL::GC_ERROR code)
{
    return error_line("Exit, Returning error ret (0x" + code_text(code) + ")");
}

} // namespace zvtest
