#pragma once

#include <string>

// Messages for the people who run the library.

namespace zvsim {

void log_information(const std::string& text);
void log_error(const std::string& text);
void log_warning(const std::string& text);
/// What the program that loads the library may show, wherever the log goes; empty when there is nothing to
/// say any more.
void report(const std::string& text);
void log_failed_call(const char* function, const char* problem) noexcept;

} // namespace zvsim
