#pragma once

#include <cstdint>
#include <string>

namespace zvgenapi {

/// The element that a node is written as.
enum class NodeType : std::uint8_t {
    node,
    category,
    integer,
    int_reg,
    masked_int_reg,
    struct_entry,
    float_,
    float_reg,
    boolean,
    command,
    enumeration,
    enum_entry,
    string,
    string_reg,
    register_,
    swiss_knife,
    int_swiss_knife,
    converter,
    int_converter,
    port,
    conf_rom,         ///< known, not supported: it has no value
    text_desc,        ///< known, not supported: it has no value
    int_key,          ///< known, not supported: it has no value
    adv_feature_lock, ///< known, not supported: it has no value
    smart_feature     ///< known, not supported: it has no value
};

/// The main interface of a node, by which a user works with it.
enum class InterfaceType : std::uint8_t {
    value, ///< none of the others, such as an element of old descriptions that is not supported
    base,  ///< only what all nodes have
    integer,
    float_,
    boolean,
    command,
    enumeration,
    enum_entry,
    string,
    register_,
    category,
    port
};

/// What may be done with a node at the moment.
enum class AccessMode : std::uint8_t {
    NI, ///< not implemented: this device does not have it
    NA, ///< not available at the moment
    WO, ///< write only
    RO, ///< read only
    RW  ///< read and write
};

enum class Visibility : std::uint8_t { beginner, expert, guru, invisible };

/// What a map keeps of a register.
enum class Caching : std::uint8_t {
    no_cache,      ///< nothing: every query reads the device
    write_through, ///< what was read and what was written
    write_around   ///< what was read; after writing, it is read again
};

/// How a number is shown.
enum class Representation : std::uint8_t {
    linear,
    logarithmic,
    boolean,
    pure_number, ///< the default
    hex_number,
    ipv4_address,
    mac_address
};

enum class DisplayNotation : std::uint8_t { automatic, fixed, scientific };

/// How a converter's values follow those of the node below it.
enum class Slope : std::uint8_t { automatic, increasing, decreasing, varying };

enum class NameSpace : std::uint8_t { custom, standard };

/// Whether a value is compared with the limits before it is written.
enum class Verify : std::uint8_t { yes, no };

/// Whether a query reads the device even where the map knows the contents of a register.
enum class UseCache : std::uint8_t { yes, no };

/// Names as descriptions write them: "IntReg", "IInteger", "RW", "Beginner", "WriteThrough", "HexNumber", ...
const char* name_of(NodeType type) noexcept;
const char* name_of(InterfaceType type) noexcept;
const char* name_of(AccessMode mode) noexcept;
const char* name_of(Visibility visibility) noexcept;
const char* name_of(Caching caching) noexcept;
const char* name_of(Representation representation) noexcept;
const char* name_of(DisplayNotation notation) noexcept;
const char* name_of(Slope slope) noexcept;
const char* name_of(NameSpace name_space) noexcept;

/// Whether the mode allows to read, or to write.
constexpr bool is_readable(AccessMode mode) noexcept
{
    return mode == AccessMode::RO || mode == AccessMode::RW;
}
constexpr bool is_writable(AccessMode mode) noexcept
{
    return mode == AccessMode::WO || mode == AccessMode::RW;
}

/// What both of two modes allow. NI wins over NA, NA over the others; RO and WO together give NA.
AccessMode combine(AccessMode one, AccessMode other) noexcept;

/// What a description says about itself: the attributes of its outermost element.
struct DeviceInfo {
    std::string model_name;
    std::string vendor_name;
    std::string tool_tip;
    std::string standard_name_space; // such as "None", "GEV", "USB"
    std::string product_guid;
    std::string version_guid;
    int schema_major{0};
    int schema_minor{0};
    int schema_subminor{0};
    int major{0};
    int minor{0};
    int subminor{0};
};

} // namespace zvgenapi
