#include "zvgenapi/types.h"

#include <algorithm>
#include <cstddef>

namespace zvgenapi {

namespace {

constexpr const char* node_types[] = {
    "Node",     "Category",   "Integer",        "IntReg",       "MaskedIntReg", "StructEntry", "Float",
    "FloatReg", "Boolean",    "Command",        "Enumeration",  "EnumEntry",    "String",      "StringReg",
    "Register", "SwissKnife", "IntSwissKnife",  "Converter",    "IntConverter", "Port",        "ConfRom",
    "TextDesc", "IntKey",     "AdvFeatureLock", "SmartFeature",
};
constexpr const char* interface_types[] = {
    "IValue",       "IBase",      "IInteger", "IFloat",    "IBoolean",  "ICommand",
    "IEnumeration", "IEnumEntry", "IString",  "IRegister", "ICategory", "IPort",
};
constexpr const char* access_modes[] = {"NI", "NA", "WO", "RO", "RW"};
constexpr const char* visibilities[] = {"Beginner", "Expert", "Guru", "Invisible"};
constexpr const char* cachings[] = {"NoCache", "WriteThrough", "WriteAround"};
constexpr const char* representations[] = {
    "Linear", "Logarithmic", "Boolean", "PureNumber", "HexNumber", "IPV4Address", "MACAddress",
};
constexpr const char* notations[] = {"Automatic", "Fixed", "Scientific"};
constexpr const char* slopes[] = {"Automatic", "Increasing", "Decreasing", "Varying"};
constexpr const char* name_spaces[] = {"Custom", "Standard"};

template <std::size_t count, class Value>
const char* pick(const char* const (&names)[count], Value value) noexcept
{
    const auto position = static_cast<std::size_t>(value);
    return position < count ? names[position] : "?";
}

} // namespace

const char* name_of(NodeType type) noexcept { return pick(node_types, type); }
const char* name_of(InterfaceType type) noexcept { return pick(interface_types, type); }
const char* name_of(AccessMode mode) noexcept { return pick(access_modes, mode); }
const char* name_of(Visibility visibility) noexcept { return pick(visibilities, visibility); }
const char* name_of(Caching caching) noexcept { return pick(cachings, caching); }
const char* name_of(Representation representation) noexcept { return pick(representations, representation); }
const char* name_of(DisplayNotation notation) noexcept { return pick(notations, notation); }
const char* name_of(Slope slope) noexcept { return pick(slopes, slope); }
const char* name_of(NameSpace name_space) noexcept { return pick(name_spaces, name_space); }

AccessMode combine(AccessMode one, AccessMode other) noexcept
{
    const AccessMode low = std::min(one, other);
    const AccessMode high = std::max(one, other);
    return low == AccessMode::WO && high == AccessMode::RO ? AccessMode::NA : low;
}

} // namespace zvgenapi
