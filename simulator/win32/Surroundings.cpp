#include "simulator/Surroundings.h"

#include <windows.h>

namespace zvsim {

namespace fs = std::filesystem;

namespace {

std::wstring wide_variable(const wchar_t* name)
{
    std::wstring value;
    DWORD length = GetEnvironmentVariableW(name, nullptr, 0);
    while (length > value.size()) { // another thread may make it longer between two looks
        value.resize(length);
        length = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    }
    value.resize(length);
    return value;
}

void add_folder_in(const wchar_t* variable, std::vector<fs::path>& folders)
{
    const fs::path folder{wide_variable(variable)};
    if (folder.is_absolute())
        folders.push_back(folder / "zvgentl");
}

} // namespace

std::string environment_variable(const char* name)
{
    const std::wstring value = wide_variable(fs::u8path(name).c_str());
    const auto length = static_cast<int>(value.size()); // the system allows 32767
    std::string text(value.size() * 3, '\0');
    text.resize(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, value.data(), length, text.data(),
                                                        static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

std::vector<fs::path> configuration_folders()
{
    std::vector<fs::path> folders;
    add_folder_in(L"APPDATA", folders);
    add_folder_in(L"ProgramData", folders);
    return folders;
}

} // namespace zvsim
