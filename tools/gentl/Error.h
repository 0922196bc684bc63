#pragma once

#include <stdexcept>
#include <string>

#include "GenTL/GenTL.h"

namespace zvgentl::tool {

/// The standard's name of an error code, or "error" and the number.
std::string error_name(GenTL::GC_ERROR code);

/// A call into the producer that did not succeed.
class Error : public std::runtime_error {
public:
    /// text is what the producer said about it; may be empty.
    Error(GenTL::GC_ERROR code, const std::string& function, const std::string& text);

    GenTL::GC_ERROR code() const noexcept { return m_code; }

private:
    GenTL::GC_ERROR m_code;
};

} // namespace zvgentl::tool
