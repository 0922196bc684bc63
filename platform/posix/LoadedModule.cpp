#include "platform/LoadedModule.h"

namespace platform {

// A library ends its threads before it is unloaded, so nothing has to be held.
LoadedModule::LoadedModule(const void* /*function*/) noexcept {}

LoadedModule::~LoadedModule() = default;

} // namespace platform
