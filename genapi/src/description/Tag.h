#pragma once

#include <cstdint>
#include <string_view>

namespace zvgenapi {

/// The elements that nodes consist of. Those of the same name mean the same in every node.
enum class Tag : std::uint8_t {
    unknown, // ignored
    access_mode,
    address,
    bit,
    cachable,
    cache_chunk_data,
    chunk_id,
    command_value,
    constant,
    description,
    display_name,
    display_notation,
    display_precision,
    docu_url,
    endianess,
    enum_entry, // a node of its own, which `target` names
    event_id,
    expression,
    extension,
    formula,
    formula_from,
    formula_to,
    imposed_access_mode,
    imposed_visibility,
    inc,
    index_offset,    // the attribute Offset of the pIndex before it
    int_swiss_knife, // a formula within an address: a node of its own, which `target` names
    is_deprecated,
    is_linear,
    is_self_clearing,
    length,
    lsb,
    max,
    min,
    msb,
    numeric_value,
    off_value,
    on_value,
    p_address,
    p_alias,
    p_block_polling,
    p_cast_alias,
    p_chunk_id,
    p_command_value,
    p_error,
    p_feature,
    p_inc,
    p_index,
    p_index_offset, // the attribute pOffset of the pIndex before it
    p_invalidator,
    p_is_available,
    p_is_implemented,
    p_is_locked,
    p_length,
    p_max,
    p_min,
    p_port,
    p_selected,
    p_value,
    p_value_copy,
    p_value_default,
    p_value_indexed,
    p_variable,
    polling_time,
    representation,
    sign,
    slope,
    streamable,
    swap_endianess,
    symbolic,
    tool_tip,
    unit,
    valid_value_set,
    value,
    value_default,
    value_indexed,
    visibility,
    count // how many there are
};

/// The tag of an element; unknown for any other.
Tag tag_of(std::string_view element) noexcept;
/// The name of the element.
const char* element_name(Tag tag) noexcept;
/// Whether the element's text is the name of a node.
bool is_reference(Tag tag) noexcept;

} // namespace zvgenapi
