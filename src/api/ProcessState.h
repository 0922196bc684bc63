#pragma once

#include <atomic>
#include <memory>
#include <string>

namespace zvgentl {

class SystemModule;

// Changed by the functions below only.
extern std::atomic<bool> library_is_initialised;
// A plain pointer without an owner: a system that nobody closed may still be in use on other threads while
// the process ends, so it is not destroyed then.
extern std::atomic<SystemModule*> system_module;

/// What the process shares: whether the library is initialised, the one system module and the last error's
/// text. None of it is per thread. Any thread may call. Which of two threads wins is not defined, but
/// nothing is ever torn.
inline bool is_initialised() noexcept { return library_is_initialised.load(std::memory_order_acquire); }
/// Switches the state; false when it was already as asked.
bool set_initialised() noexcept;
void set_uninitialised() noexcept;

/// The root of the module tree, null while no system is open.
inline SystemModule* current_system() noexcept { return system_module.load(std::memory_order_acquire); }
/// Makes `system` the current one; false, and nothing changed, when there is one already.
bool set_system(std::unique_ptr<SystemModule> system) noexcept;
/// Takes the current system away if it is the given one: its owner then, else null.
std::unique_ptr<SystemModule> take_system(const void* handle) noexcept;
/// Destroys a system that was taken away. In a child process it is only forgotten: its grabbers are the
/// parent's, and the threads that closing them waits for are not there.
void end_system(std::unique_ptr<SystemModule> system) noexcept;

/// The text of the error recorded last, by any thread. "No Error" until the first; it outlives GCCloseLib.
std::string last_error();
void set_last_error(std::string text);

} // namespace zvgentl
