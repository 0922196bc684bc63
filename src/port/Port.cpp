#include "port/Port.h"

#include <type_traits>

#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"

namespace zvgentl {

namespace {

template <ModuleKind kind>
using ModuleOf = std::variant_alternative_t<static_cast<size_t>(kind), Port::Module>;

static_assert(std::is_same_v<std::monostate, ModuleOf<ModuleKind::invalid>>);
static_assert(std::is_same_v<const SystemModule*, ModuleOf<ModuleKind::system>>);
static_assert(std::is_same_v<const InterfaceModule*, ModuleOf<ModuleKind::iface>>);
static_assert(std::is_same_v<const DeviceModule*, ModuleOf<ModuleKind::device>>);
static_assert(std::is_same_v<const StreamModule*, ModuleOf<ModuleKind::stream>>);
static_assert(std::is_same_v<PinnedBuffer, ModuleOf<ModuleKind::buffer>>);
static_assert(std::is_same_v<const CameraModule*, ModuleOf<ModuleKind::remote_device>>);

struct Id {
    std::string operator()(std::monostate) const { return {}; }
    template <class Module>
    std::string operator()(const Module& module) const
    {
        return module->getId();
    }
};

} // namespace

std::string Port::getId() const { return std::visit(Id{}, m_module); }

} // namespace zvgentl
