#pragma once

#include <string>

// Messages for the people who run the library.

namespace zvsim {

void log_information(const std::string& text);
void log_error(const std::string& text);
void log_warning(const std::string& text);
void log_failed_call(const char* function, const char* problem) noexcept;

} // namespace zvsim
