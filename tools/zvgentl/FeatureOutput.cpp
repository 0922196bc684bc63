#include "zvgentl/FeatureOutput.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace zvgentl::tool {

namespace {

using Json = nlohmann::ordered_json;

/// Values come from devices: what would disturb a terminal is written as a dot.
std::string printable(std::string text)
{
    for (char& letter : text)
        if (static_cast<unsigned char>(letter) < ' ' || letter == 0x7F)
            letter = '.';
    return text;
}

std::string value_text(const Feature& feature)
{
    if (std::holds_alternative<std::monostate>(feature.value))
        return {};
    const std::string text = printable(to_text(feature.value, feature.notation));
    if (feature.kind == FeatureKind::string)
        return "\"" + text + "\"";
    return feature.unit.empty() ? text : text + " " + printable(feature.unit);
}

std::string limits_text(const Feature& feature)
{
    if (feature.kind == FeatureKind::enumeration)
        return feature.entries.empty()
                   ? ""
                   : fmt::format("({})", printable(fmt::format("{}", fmt::join(feature.entries, ", "))));
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
        return "! " + printable(feature.problem);
    if (line.entry.is_repeated)
        return "(see above)";
    std::string text = value_text(feature);
    // Limits say what could be written; where nothing can, they only fill the line.
    const std::string limits = feature.access.is_writable ? limits_text(feature) : std::string();
    for (const auto& part :
         {limits,
          feature.selects.empty()
              ? std::string()
              : fmt::format("selects {}", printable(fmt::format("{}", fmt::join(feature.selects, ", "))))})
        if (!part.empty())
            text += (text.empty() ? "" : "  ") + part;
    return text;
}

std::string name_text(const TreeEntry& entry)
{
    return std::string(2U * static_cast<std::size_t>(std::max(entry.level, 0)), ' ') + printable(entry.name);
}

Json line_json(const FeatureLine& line)
{
    const Feature& feature = line.feature;
    Json json{{"name", feature.name},
              {"level", line.entry.level},
              {"type", kind_name(feature.kind)},
              {"display_name", feature.display_name},
              {"description", feature.description},
              {"visibility", feature.visibility},
              {"access", access_name(feature.access)},
              {"value", to_json(feature.value)}};
    if (feature.kind == FeatureKind::integer || feature.kind == FeatureKind::floating_point) {
        json["text"] = to_text(feature.value, feature.notation);
        json["minimum"] = to_json(feature.minimum);
        json["maximum"] = to_json(feature.maximum);
        json["increment"] = to_json(feature.increment);
        json["unit"] = feature.unit;
    }
    if (feature.kind == FeatureKind::string)
        json["longest"] = to_json(feature.maximum);
    if (feature.kind == FeatureKind::enumeration)
        json["entries"] = feature.entries;
    if (!feature.selects.empty())
        json["selects"] = feature.selects;
    if (line.entry.is_repeated)
        json["repeated"] = true;
    if (!feature.problem.empty())
        json["problem"] = feature.problem;
    return json;
}

} // namespace

std::string to_text(const std::vector<FeatureLine>& lines)
{
    std::size_t name = 0;
    std::size_t kind = 0;
    std::size_t access = 0;
    for (const auto& line : lines) {
        name = std::max(name, name_text(line.entry).size());
        if (line.feature.kind == FeatureKind::category)
            continue;
        kind = std::max(kind, std::string(kind_name(line.feature.kind)).size());
        access = std::max(access, access_name(line.feature.access).size());
    }
    std::string text;
    for (const auto& line : lines) {
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

nlohmann::ordered_json to_json(const Value& value)
{
    if (const auto* const boolean = std::get_if<bool>(&value))
        return *boolean;
    if (const auto* const number = std::get_if<std::int64_t>(&value))
        return *number;
    if (const auto* const number = std::get_if<double>(&value))
        return std::isfinite(*number) ? Json(*number) : Json(nullptr);
    if (const auto* const text = std::get_if<std::string>(&value))
        return *text;
    return nullptr;
}

nlohmann::ordered_json to_json(const std::vector<FeatureLine>& lines)
{
    Json json = Json::array();
    for (const auto& line : lines)
        json.push_back(line_json(line));
    return json;
}

} // namespace zvgentl::tool
