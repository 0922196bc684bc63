#include "platform/module_path.h"

#include <tuple>

#include <windows.h>

namespace platform {

std::optional<std::string> module_path()
{
    // Without the flag, asking would count as loading the module once more, and no FreeLibrary would ever
    // unload it.
    HMODULE own = nullptr;
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCSTR>(&module_path), &own) == 0)
        return std::nullopt;
    char text[MAX_PATH + 1] = {}; // one longer: a path that is cut is not always ended
    std::ignore = GetModuleFileNameA(own, text, DWORD{MAX_PATH}); // else it stays empty
    return std::string(text);
}

} // namespace platform
