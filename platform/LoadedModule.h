#pragma once

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

} // namespace platform
