#include "zvgentl/FeatureOutput.h"

#include <algorithm>

#include <fmt/core.h>

#include "genapi/values.h"
#include "gentl/texts.h"
#include "platform/visible_text.h"
#include "zvgentl/TextTable.h"

namespace zvgentl::tool {

using platform::visible;

namespace {

std::string value_text(const Feature& feature)
{
    if (std::holds_alternative<std::monostate>(feature.value))
        return {};
    const std::string text = visible(to_text(feature.value, feature.notation));
    if (feature.kind == FeatureKind::string)
        return "\"" + text + "\"";
    return feature.unit.empty() ? text : text + " " + visible(feature.unit);
}

std::string limits_text(const Feature& feature)
{
    if (feature.kind == FeatureKind::enumeration)
        return feature.entries.empty() ? "" : "(" + visible(joined(feature.entries, ", ")) + ")";
    const std::string low = to_text(feature.minimum, feature.notation);
    const std::string high = to_text(feature.maximum, feature.notation);
    const std::string step = to_text(feature.increment, feature.notation);
    if (feature.kind == FeatureKind::string)
        return high.empty() ? "" : fmt::format("(up to {} characters)", high);
    if (low.empty() && high.empty() && step.empty())
        return {};
    return fmt::format("[{} .. {}{}]", low, high, step.empty() ? "" : ", step " + step);
}

std::string detail_text(const FeatureLine& line)
{
    const Feature& feature = line.feature;
    if (!feature.problem.empty())
        return "! " + visible(feature.problem);
    if (line.entry.is_repeated)
        return "(see above)";
    std::string text = value_text(feature);
    // Limits say what could be written; where nothing can, they only fill the line.
    const std::string limits = feature.access.is_writable ? limits_text(feature) : std::string();
    for (const auto& part :
         {limits,
          feature.selects.empty() ? std::string() : "selects " + visible(joined(feature.selects, ", "))})
        if (!part.empty())
            text += (text.empty() ? "" : "  ") + part;
    return text;
}

std::string name_text(const TreeEntry& entry)
{
    return std::string(2U * static_cast<std::size_t>(std::max(entry.level, 0)), ' ') + visible(entry.name);
}

} // namespace

std::string to_text(const FeatureTable& table)
{
    std::size_t name = 0;
    std::size_t kind = 0;
    std::size_t access = 0;
    for (const auto& line : table.lines) {
        name = std::max(name, name_text(line.entry).size());
        if (line.feature.kind == FeatureKind::category)
            continue;
        kind = std::max(kind, std::string(kind_name(line.feature.kind)).size());
        access = std::max(access, access_name(line.feature.access).size());
    }
    std::string text = visible(table.port) + ": " + visible(table.category) + "\n";
    for (const auto& line : table.lines) {
        const bool is_category = line.feature.kind == FeatureKind::category;
        std::string row =
            fmt::format("{:<{}}  {:<{}}  {:<{}}  {}", name_text(line.entry), name,
                        is_category ? "" : kind_name(line.feature.kind), kind,
                        is_category ? "" : access_name(line.feature.access), access, detail_text(line));
        row.erase(row.find_last_not_of(' ') + 1);
        text += row + "\n";
    }
    return text;
}

std::string to_text(const std::string& port, const FeatureDetails& details)
{
    const Feature& feature = details.feature;
    std::vector<std::vector<std::string>> rows;
    const auto add = [&rows](const char* fact, const std::string& text) {
        if (!text.empty())
            rows.push_back({fact, text});
    };
    add("Display name", feature.display_name);
    add("Type", std::string(kind_name(feature.kind)) + " (" + details.element + ")");
    add("Access", access_name(feature.access));
    add("Visibility", feature.visibility);
    add("Value", value_text(feature));
    if (feature.kind == FeatureKind::enumeration)
        add("Entries", joined(feature.entries, ", "));
    else if (feature.kind == FeatureKind::string)
        add("Longest", to_text(feature.maximum));
    else
        add("Range", range_text(feature));
    add("Unit", feature.unit);
    add("Selected by", joined(details.selectors, ", "));
    add("Selects", joined(feature.selects, ", "));
    add("Stored", details.is_streamable ? "yes" : "no");
    add("Deprecated", details.is_deprecated ? "yes" : "");
    add("Tool tip", feature.description);
    add("Description", details.long_description);
    add("More", details.docu_url);
    add("Problem", feature.problem);
    std::string text = visible(port) + ": " + visible(feature.name) + "\n" + table_text(rows, "  ");
    std::vector<std::vector<std::string>> places;
    for (const RegisterPlace& place : details.registers)
        if (place.problem.empty())
            places.push_back({place.name, fmt::format("{:#x}", place.address),
                              fmt::format("{} bytes", place.length), place.access, place.caching,
                              "port " + place.port});
        else
            places.push_back({place.name, "! " + place.problem});
    return places.empty() ? text : text + "  Registers\n" + table_text(places, "    ");
}

} // namespace zvgentl::tool
