#include "platform/environment.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace platform {

const char path_list_separator = ':';

std::string environment(const char* name)
{
    const char* const value = secure_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

EnvironmentCopy::EnvironmentCopy(const std::vector<const char*>& names) : m_list_place(environ)
{
    for (char* const* entry = environ; entry != nullptr; ++entry) {
        m_list.push_back(*entry);
        if (*entry == nullptr)
            break;
    }
    for (const char* const name : names) {
        const char* const place = secure_getenv(name);
        m_variables.push_back({name, place == nullptr ? "" : place, place});
    }
}

// Comparing the list of addresses is much cheaper than searching the texts for the names. A list that stays
// where it is does not get shorter, only its end may move forward.
bool EnvironmentCopy::is_current() const
{
    if (m_variables.empty())
        return true;
    return environ == m_list_place &&
           (m_list.empty() || std::memcmp(environ, m_list.data(), m_list.size() * sizeof m_list[0]) == 0) &&
           std::all_of(m_variables.begin(), m_variables.end(), [](const Variable& variable) {
               return variable.place == nullptr || std::strcmp(variable.value.c_str(), variable.place) == 0;
           });
}

void set_environment(const char* name, const std::string& value)
{
    if (value.empty())
        unsetenv(name); // NOLINT(concurrency-mt-unsafe): before threads start
    else
        setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): before threads start
}

} // namespace platform
