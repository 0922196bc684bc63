#include "system/consumer/Functions.h"

#include <stdexcept>
#include <string>

#include <dlfcn.h>

namespace zvsystem {

Symbol::Symbol(void* library, const char* name) : m_address(dlsym(library, name))
{
    if (m_address == nullptr)
        throw std::runtime_error(std::string(name) + " is not exported");
}

} // namespace zvsystem
