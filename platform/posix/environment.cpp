#include "platform/environment.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

namespace platform {

const char path_list_separator = ':';

std::string environment(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): set before threads start
    return value == nullptr ? std::string() : std::string(value);
}

EnvironmentCopy::EnvironmentCopy(const std::vector<const char*>& names)
{
    for (char* const* entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        m_list.push_back(*entry);
    for (const char* const name : names) {
        const char* const place = std::getenv(name); // NOLINT(concurrency-mt-unsafe): see above
        m_variables.push_back({name, place == nullptr ? "" : place, place});
    }
}

// Comparing the list of addresses is much cheaper than searching the texts for the names.
bool EnvironmentCopy::is_current() const
{
    char* const* entry = environ;
    for (const char* const known : m_list) {
        if (entry == nullptr || *entry++ != known)
            return false;
    }
    const bool has_more = entry != nullptr && *entry != nullptr;
    return m_variables.empty() ||
           (!has_more && std::all_of(m_variables.begin(), m_variables.end(), [](const Variable& variable) {
               return variable.place == nullptr || variable.value == variable.place;
           }));
}

void set_environment(const char* name, const std::string& value)
{
    if (value.empty())
        unsetenv(name); // NOLINT(concurrency-mt-unsafe): see above
    else
        setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): see above
}

} // namespace platform
