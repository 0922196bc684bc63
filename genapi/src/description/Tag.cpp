#include "description/Tag.h"

#include <algorithm>
#include <iterator>

namespace zvgenapi {

namespace {

struct Row {
    std::string_view element;
    Tag tag;
};

// Sorted by element.
constexpr Row rows[] = {
    {"AccessMode", Tag::access_mode},
    {"Address", Tag::address},
    {"Bit", Tag::bit},
    {"Cachable", Tag::cachable},
    {"CacheChunkData", Tag::cache_chunk_data},
    {"ChunkID", Tag::chunk_id},
    {"CommandValue", Tag::command_value},
    {"Constant", Tag::constant},
    {"Description", Tag::description},
    {"DisplayName", Tag::display_name},
    {"DisplayNotation", Tag::display_notation},
    {"DisplayPrecision", Tag::display_precision},
    {"DocuURL", Tag::docu_url},
    {"Endianess", Tag::endianess},
    {"EnumEntry", Tag::enum_entry},
    {"EventID", Tag::event_id},
    {"Expression", Tag::expression},
    {"Extension", Tag::extension},
    {"Formula", Tag::formula},
    {"FormulaFrom", Tag::formula_from},
    {"FormulaTo", Tag::formula_to},
    {"ImposedAccessMode", Tag::imposed_access_mode},
    {"ImposedVisibility", Tag::imposed_visibility},
    {"Inc", Tag::inc},
    {"IntSwissKnife", Tag::int_swiss_knife},
    {"IsDeprecated", Tag::is_deprecated},
    {"IsLinear", Tag::is_linear},
    {"IsSelfClearing", Tag::is_self_clearing},
    {"LSB", Tag::lsb},
    {"Length", Tag::length},
    {"MSB", Tag::msb},
    {"Max", Tag::max},
    {"Min", Tag::min},
    {"NumericValue", Tag::numeric_value},
    {"OffValue", Tag::off_value},
    {"OnValue", Tag::on_value},
    {"PollingTime", Tag::polling_time},
    {"Representation", Tag::representation},
    {"Sign", Tag::sign},
    {"Slope", Tag::slope},
    {"Streamable", Tag::streamable},
    {"SwapEndianess", Tag::swap_endianess},
    {"Symbolic", Tag::symbolic},
    {"ToolTip", Tag::tool_tip},
    {"Unit", Tag::unit},
    {"ValidValueSet", Tag::valid_value_set},
    {"Value", Tag::value},
    {"ValueDefault", Tag::value_default},
    {"ValueIndexed", Tag::value_indexed},
    {"Visibility", Tag::visibility},
    {"pAddress", Tag::p_address},
    {"pAlias", Tag::p_alias},
    {"pBlockPolling", Tag::p_block_polling},
    {"pCastAlias", Tag::p_cast_alias},
    {"pChunkID", Tag::p_chunk_id},
    {"pCommandValue", Tag::p_command_value},
    {"pError", Tag::p_error},
    {"pFeature", Tag::p_feature},
    {"pInc", Tag::p_inc},
    {"pIndex", Tag::p_index},
    {"pInvalidator", Tag::p_invalidator},
    {"pIsAvailable", Tag::p_is_available},
    {"pIsImplemented", Tag::p_is_implemented},
    {"pIsLocked", Tag::p_is_locked},
    {"pLength", Tag::p_length},
    {"pMax", Tag::p_max},
    {"pMin", Tag::p_min},
    {"pPort", Tag::p_port},
    {"pSelected", Tag::p_selected},
    {"pValue", Tag::p_value},
    {"pValueCopy", Tag::p_value_copy},
    {"pValueDefault", Tag::p_value_default},
    {"pValueIndexed", Tag::p_value_indexed},
    {"pVariable", Tag::p_variable},
};

} // namespace

Tag tag_of(std::string_view element) noexcept
{
    const auto* const row =
        std::lower_bound(std::begin(rows), std::end(rows), element,
                         [](const Row& one, std::string_view name) { return one.element < name; });
    return row != std::end(rows) && row->element == element ? row->tag : Tag::unknown;
}

const char* element_name(Tag tag) noexcept
{
    if (tag == Tag::index_offset)
        return "Offset";
    if (tag == Tag::p_index_offset)
        return "pOffset";
    const auto* const row =
        std::find_if(std::begin(rows), std::end(rows), [tag](const Row& one) { return one.tag == tag; });
    return row == std::end(rows) ? "" : row->element.data();
}

bool is_reference(Tag tag) noexcept
{
    return (tag >= Tag::p_address && tag <= Tag::p_variable) || tag == Tag::int_swiss_knife ||
           tag == Tag::enum_entry;
}

} // namespace zvgenapi
