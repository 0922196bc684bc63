#pragma once

// What a library with threads of its own needs so that it can be unloaded.

namespace platform {

/// Keeps the module that holds a function loaded, from construction to destruction, on systems where its
/// unload cannot wait for the threads that run in it. On the others it does nothing.
class LoadedModule {
public:
    LoadedModule() = default;
    /// The module of a function, given as `reinterpret_cast<const void*>(&function)`.
    explicit LoadedModule(const void* function) noexcept;
    /// The module of this code.
    static LoadedModule own() noexcept;
    LoadedModule(LoadedModule&& other) noexcept;
    LoadedModule& operator=(LoadedModule&& other) noexcept;
    ~LoadedModule(); // NOLINT(performance-trivially-destructible): on Windows it gives the module back

private:
    void* m_module{nullptr};
};

/// True once the system has stopped all other threads because the process ends, wherever they were: a lock
/// may be held for good, and nothing can be waited for. Only Windows does so before it unloads a library.
bool other_threads_were_stopped() noexcept;

} // namespace platform
