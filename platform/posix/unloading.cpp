#include "platform/unloading.h"

namespace platform {

// A library ends its threads before it is unloaded, so nothing has to be held.
LoadedModule::LoadedModule(const void* /*function*/) noexcept {}

LoadedModule::~LoadedModule() = default;

bool other_threads_were_stopped() noexcept { return false; }

} // namespace platform
