#include "zvgentl/Json.h"

#include <cmath>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "pictures/PixelFormat.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/FrameSink.h"
#include "zvgentl/GrabResult.h"
#include "zvgentl/ProducerTree.h"

// The only source that builds JSON: the library that does it is all in its header.

namespace zvgentl::tool {

namespace {

using Json = nlohmann::ordered_json;

/// The library escapes only the control characters below the blank.
std::string text_of(const Json& json)
{
    const std::string text = json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto code = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        if (code == 0x7F) {
            escaped += "\\u007f";
        } else if (code == 0xC2 && next >= 0x80 && next < 0xA0) {
            escaped += fmt::format("\\u{:04x}", next);
            ++i;
        } else {
            escaped += text[i];
        }
    }
    return escaped;
}

template <class Number>
Json or_null(const std::optional<Number>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

Json device_json(const DeviceEntry& device)
{
    Json json{{"id", device.id},
              {"vendor", device.vendor},
              {"model", device.model},
              {"display_name", device.display_name},
              {"user_defined_name", device.user_defined_name},
              {"serial_number", device.serial_number},
              {"version", device.version},
              {"transport", device.transport},
              {"access", device.access},
              {"timestamp_frequency", nullptr}};
    if (device.timestamp_frequency)
        json["timestamp_frequency"] = *device.timestamp_frequency;
    if (!device.streams.empty())
        json["streams"] = device.streams;
    if (!device.problem.empty())
        json["problem"] = device.problem;
    return json;
}

Json interface_json(const InterfaceEntry& iface)
{
    Json json{{"id", iface.id},
              {"display_name", iface.display_name},
              {"transport", iface.transport},
              {"devices", Json::array()}};
    for (const auto& device : iface.devices)
        json["devices"].push_back(device_json(device));
    if (!iface.problem.empty())
        json["problem"] = iface.problem;
    return json;
}

Json producer_json(const ProducerEntry& producer)
{
    Json json{{"file", producer.file},           {"display_name", producer.display_name},
              {"vendor", producer.vendor},       {"model", producer.model},
              {"version", producer.version},     {"gentl_version", producer.gentl_version},
              {"transport", producer.transport}, {"interfaces", Json::array()}};
    for (const auto& iface : producer.interfaces)
        json["interfaces"].push_back(interface_json(iface));
    if (!producer.report.empty())
        json["report"] = producer.report;
    if (!producer.problem.empty())
        json["problem"] = producer.problem;
    return json;
}

Json value_json(const Value& value)
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

Json values_json(const NamedValues& values)
{
    Json json = Json::object();
    for (const auto& [name, value] : values)
        json[name] = value_json(value);
    return json;
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
              {"value", value_json(feature.value)}};
    if (feature.kind == FeatureKind::integer || feature.kind == FeatureKind::floating_point) {
        json["text"] = to_text(feature.value, feature.notation);
        json["minimum"] = value_json(feature.minimum);
        json["maximum"] = value_json(feature.maximum);
        json["increment"] = value_json(feature.increment);
        json["unit"] = feature.unit;
    }
    if (feature.kind == FeatureKind::string)
        json["longest"] = value_json(feature.maximum);
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

Json register_json(const RegisterPlace& place)
{
    Json json{{"name", place.name},     {"port", place.port},     {"address", place.address},
              {"length", place.length}, {"access", place.access}, {"caching", place.caching}};
    if (!place.problem.empty())
        json["problem"] = place.problem;
    return json;
}

const char* outcome_name(Outcome outcome) noexcept
{
    switch (outcome) {
    case Outcome::complete:
        return "complete";
    case Outcome::incomplete:
        return "incomplete";
    case Outcome::interrupted:
        return "interrupted";
    case Outcome::failed:
        return "failed";
    default:
        return "timed out";
    }
}

Json source_json(LossSource source)
{
    switch (source) {
    case LossSource::frame_ids:
        return "frame ids";
    case LossSource::frame_counter:
        return "frame counter";
    default:
        return nullptr;
    }
}

Json picture_json(const std::optional<PictureKind>& picture)
{
    if (!picture)
        return nullptr;
    return {{"width", picture->width},
            {"height", picture->height},
            {"pixel_format", pixel_format_name(picture->pixel_format)},
            {"pixel_format_code", picture->pixel_format}};
}

Json saved_json(const GrabResult& result)
{
    if (result.options.output.empty())
        return nullptr;
    return {{"files", result.saved},
            {"folder", result.options.output},
            {"format", format_name(result.options.format)}};
}

} // namespace

std::string json_text(const std::vector<ProducerEntry>& producers)
{
    Json json{{"producers", Json::array()}};
    for (const auto& producer : producers)
        json["producers"].push_back(producer_json(producer));
    return text_of(json);
}

std::string json_text(const FeatureTable& table)
{
    Json json{{"port", table.port}, {"category", table.category}, {"features", Json::array()}};
    for (const auto& line : table.lines)
        json["features"].push_back(line_json(line));
    return text_of(json);
}

std::string json_text(const std::string& port, const FeatureDetails& details)
{
    Json json{{"port", port}};
    json.update(line_json({{details.feature.name, 0, false}, details.feature}));
    json.erase("level");
    json["element"] = details.element;
    json["selected_by"] = details.selectors;
    json["stored"] = details.is_streamable;
    json["deprecated"] = details.is_deprecated;
    json["long_description"] = details.long_description;
    json["docu_url"] = details.docu_url;
    json["registers"] = Json::array();
    for (const RegisterPlace& place : details.registers)
        json["registers"].push_back(register_json(place));
    return text_of(json);
}

std::string json_text(const NamedValues& values) { return text_of(values_json(values)); }

std::string json_text(const char* list, const std::vector<NamedValues>& rows)
{
    Json json{{list, Json::array()}};
    for (const auto& row : rows)
        json[list].push_back(values_json(row));
    return text_of(json);
}

std::string json_line(const RawHeader& header)
{
    const Frame& frame = header.frame;
    const Json json{{"raw_frame", 1}, // the version of this layout
                    {"number", header.number},
                    {"size", frame.size},
                    {"width", frame.width},
                    {"height", frame.height},
                    {"row_padding", frame.row_padding},
                    {"pixel_format", pixel_format_name(frame.pixel_format)},
                    {"pixel_format_code", frame.pixel_format},
                    {"pixel_format_namespace", frame.pixel_format_namespace},
                    {"bits_per_pixel", frame.pixel_format >> 16U & 0xFFU}, // PFNC keeps it there
                    {"byte_order", "little"},
                    {"id", frame.id},
                    {"timestamp", frame.timestamp},
                    {"timestamp_frequency", header.timestamp_frequency},
                    {"incomplete", frame.is_incomplete}};
    return json.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
}

std::string json_text(const GrabResult& result)
{
    const FrameCount& count = result.count;
    return text_of(
        {{"outcome", outcome_name(result.outcome)},
         {"exit_code", result.exit_code()},
         {"problem", result.problem.empty() ? Json(nullptr) : Json(result.problem)},
         {"producer", result.producer},
         {"interface", result.interface_id},
         {"device", result.device_id},
         {"vendor", result.vendor},
         {"model", result.model},
         {"serial_number", result.serial_number},
         {"mode", mode_name(result.options.mode)},
         {"buffers", result.options.buffers},
         {"buffer_size", result.buffer_size},
         {"picture", picture_json(result.picture)},
         {"requested", result.options.wanted()},
         {"skipped", result.options.skip},
         {"delivered", count.delivered()},
         {"lost", or_null(count.lost())},
         {"lost_from", source_json(count.loss_source())},
         {"out_of_order", count.late()},
         {"repeated", count.repeated()},
         {"seconds", result.seconds},
         {"frames_per_second", or_null(result.rate(result.seconds))},
         {"device_frames_per_second", or_null(result.rate(result.device_seconds))},
         {"checksums",
          {{"checked", count.stamps_checked()}, {"found", count.stamped()}, {"damaged", count.damaged()}}},
         {"incomplete_frames", count.incomplete()},
         {"saved", saved_json(result)}});
}

} // namespace zvgentl::tool
