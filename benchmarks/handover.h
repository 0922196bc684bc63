#pragma once

#include <functional>

#include "benchmarks/threads.h"

namespace zvbench {

/// What a sending and a receiving thread do for one delivery. Both run once for each.
struct Parties {
    std::function<void()> send;    // on the sender's thread, once the receiver waits
    std::function<void()> receive; // on the receiver's thread: waits, and returns with what was sent
    std::function<void()> settle;  // on the receiver's thread, after the time is taken; may be empty
};

/// How a receiver waits: it sleeps in the kernel, or it looks again and again.
enum class Waiting { asleep, spinning };

/// The medians of some deliveries, in nanoseconds.
struct DeliveryTimes {
    double until_received; // from the call of `send` to the return of `receive`
    double sending;        // the call of `send`
};

/// Sends `count` times to a waiting receiver.
DeliveryTimes deliver(const Parties& parties, Cores cores, Waiting waiting, size_t count);

} // namespace zvbench
