#pragma once

#include <cstdint>
#include <string>

// Texts of this library are UTF-8, those of the system are UTF-16.

namespace platform {

std::wstring wide(const std::string& text);
std::string narrow(const std::wstring& text);

/// The system's words for the error number of a call, in one line.
std::string describe_error(uint32_t number);

} // namespace platform
