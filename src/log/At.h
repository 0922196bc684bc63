#pragma once

namespace zvgentl {

/// Where a log line is written from: the number in brackets that opens its message. Chosen by hand and unique
/// within a logger's unit, so that a number in a customer's log finds one line in every version; never the
/// source line.
struct At {
    int number;
};

} // namespace zvgentl
