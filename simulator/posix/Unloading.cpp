#include "simulator/Unloading.h"

#include "simulator/Library.h"

namespace zvsim {

// ShutDown ends the threads before anything is unloaded, so nothing has to be held.
LoadedModule::LoadedModule(const void* /*function*/) noexcept {}

LoadedModule::~LoadedModule() = default;

ShutDown::~ShutDown() { Library::instance().shut_down(); }

} // namespace zvsim
