#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// A target is one source with this function, whose name libFuzzer knows. It gives the input to the code that
// reads it, which may refuse it in its own way, and checks what comes out. driver.cpp calls it with a fixed
// series of inputs.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zvhostile {

inline std::string text_of(const std::uint8_t* data, std::size_t size)
{
    return size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(data), size);
}

/// Ends the program when the condition does not hold, so that the input is found.
inline void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "not true: %s\n", what);
    std::abort();
}

} // namespace zvhostile
