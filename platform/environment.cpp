#include "platform/environment.h"

namespace platform {

Variables environment_of(const std::vector<const char*>& names)
{
    Variables variables;
    for (const char* const name : names)
        variables.emplace_back(name, environment(name));
    return variables;
}

} // namespace platform
