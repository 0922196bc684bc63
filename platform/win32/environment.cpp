#include "platform/environment.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <windows.h>

#include "platform/win32/wide.h"

namespace platform {

const char path_list_separator = ';';

std::string environment(const char* name)
{
    const std::wstring wide_name = wide(name);
    std::wstring value;
    DWORD length = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    while (length > value.size()) { // another thread may make it longer between two looks
        value.resize(length);
        length = GetEnvironmentVariableW(wide_name.c_str(), value.data(), static_cast<DWORD>(value.size()));
    }
    value.resize(length);
    return narrow(value);
}

EnvironmentCopy::EnvironmentCopy(const std::vector<const char*>& names)
{
    for (const char* const name : names)
        m_variables.push_back({name, environment(name), nullptr});
}

bool EnvironmentCopy::is_current() const
{
    return std::all_of(m_variables.begin(), m_variables.end(),
                       [](const Variable& variable) { return environment(variable.name) == variable.value; });
}

void set_environment(const char* name, const std::string& value)
{
    // Through the run-time library, which keeps a copy of its own for getenv.
    if (_wputenv_s(wide(name).c_str(), wide(value).c_str()) != 0)
        throw std::runtime_error(std::string("cannot set the variable ") + name);
}

} // namespace platform
