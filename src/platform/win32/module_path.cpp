#include "platform/module_path.h"

#include <tuple>

#include <windows.h>

namespace zvgentl::platform {

namespace {

constexpr size_t max_path = MAX_PATH;

/// The module that this code is in, held from construction to destruction: asking for it counts as loading it
/// once more, so that without the release no FreeLibrary would ever unload it.
class OwnModule {
public:
    OwnModule() noexcept
    {
        if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCSTR>(&module_path),
                               &m_module) == 0)
            m_module = nullptr;
    }
    ~OwnModule()
    {
        if (m_module != nullptr)
            std::ignore = FreeLibrary(m_module); // taken above: nothing to fail
    }
    OwnModule(const OwnModule&) = delete;
    OwnModule& operator=(const OwnModule&) = delete;

    HMODULE get() const noexcept { return m_module; }

private:
    HMODULE m_module{nullptr};
};

} // namespace

std::optional<std::string> module_path()
{
    const OwnModule own;
    if (own.get() == nullptr)
        return std::nullopt;
    char text[max_path + 1] = {}; // zeroed, and one longer: a path that is cut is not always ended
    std::ignore = GetModuleFileNameA(own.get(), text, static_cast<DWORD>(max_path)); // else it stays empty
    return std::string(text);
}

} // namespace zvgentl::platform
