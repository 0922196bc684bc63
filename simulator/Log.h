#pragma once

#include <string>

// What the library tells the people who run it.

namespace zvsim {

void log_information(const std::string& text);
void log_error(const std::string& text);
void log_warning(const std::string& text);
void log_failed_call(const char* function, const char* problem) noexcept;

} // namespace zvsim
