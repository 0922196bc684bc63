#include "platform/environment.h"

#include <algorithm>
#include <cstdlib>

namespace platform {

const char path_list_separator = ':';

std::string environment(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): set before threads start
    return value == nullptr ? std::string() : std::string(value);
}

bool environment_is(const Variables& variables)
{
    return std::all_of(variables.begin(), variables.end(), [](const auto& variable) {
        const char* const value = std::getenv(variable.first); // NOLINT(concurrency-mt-unsafe): see above
        return variable.second == (value == nullptr ? "" : value);
    });
}

void set_environment(const char* name, const std::string& value)
{
    if (value.empty())
        unsetenv(name); // NOLINT(concurrency-mt-unsafe): see above
    else
        setenv(name, value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): see above
}

} // namespace platform
