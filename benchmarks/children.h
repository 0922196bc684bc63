#pragma once

#include <string>
#include <vector>

namespace zvbench {

/// Runs a program to its end, without its output. Throws std::runtime_error unless its exit code is 0.
void run_child(const std::vector<std::string>& command);

} // namespace zvbench
