#pragma once

// Why this library is being unloaded.

namespace zvsim {

/// True once the process ends: the system has stopped every other thread by then, wherever it was, so locks
/// may be held for good and nothing can be waited for.
extern bool process_is_ending;

} // namespace zvsim
