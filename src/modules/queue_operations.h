#pragma once

#include <cstdint>
#include <string>

namespace zvgentl {

/// The flush operation beyond the standard's: drop every entry of the new-buffer event.
constexpr int32_t flush_all_events = 1000;

/// An operation's name as log lines print it.
std::string queue_operation_name(int32_t operation);

} // namespace zvgentl
