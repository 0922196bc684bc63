#pragma once

#include <string>
#include <vector>

#include "GenTL/GenTL.h"

namespace zvgentl::tool {

/// What an error code means when one function of our producer answers it.
struct FunctionGuide {
    const char* function;
    GenTL::GC_ERROR code;
    const char* cause;
    const char* remedy;
};

/// What an error code means in any function.
struct ErrorGuide {
    GenTL::GC_ERROR code;
    std::string name;
    std::string meaning;
    std::string remedy;
    std::vector<FunctionGuide> functions; // in which it means something particular
};

/// Explains the codes in a text, which may be a number (-1004, 0xFFFFFC14), a name (GC_ERR_ERROR, with or
/// without its first part), the name of a function, or a whole message or log line that holds such things.
/// A function and a code together give what the code means in that function, if that is known; a function
/// alone gives all its codes. Throws std::runtime_error when the text holds nothing that can be explained.
std::vector<ErrorGuide> explain(const std::string& text);

std::string to_text(const std::vector<ErrorGuide>& guides);

} // namespace zvgentl::tool
