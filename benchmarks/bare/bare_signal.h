#pragma once

// The least that one thread needs to tell another one: an event that resets itself, once for the process.
// Each kind is a pair of functions. A wait returns once for each signal that comes while it waits.

#pragma GCC visibility push(default)
extern "C" {

/// A mutex and a condition variable.
void condition_signal();
void condition_wait();

/// A futex.
void futex_signal();
void futex_wait();

/// A number that the waiting thread reads again and again.
void spin_signal();
void spin_wait();
}
#pragma GCC visibility pop
