#include "simulator/faults/FaultConfiguration.h"

#include <algorithm>
#include <string>

#include "zvgr/ZVGRLib.h"

#include "simulator/Settings.h"

namespace zvsim {

namespace {

constexpr int64_t any_number = std::numeric_limits<int64_t>::max();
constexpr int64_t any_status = 0xFFFFFFFF;
constexpr int64_t most_faults = 1000;
constexpr size_t longest_name = 100;
constexpr std::chrono::minutes longest_hold_up{10};
constexpr std::chrono::hours longest_time{24 * 365};

// Built where they are used, so that they still exist for a call while the process ends.

YamlKeys fault_section()
{
    return {"fault",
            {"kind", "grabber", "camera", "when", "times", "function", "name", "command", "status", "time",
             "away_for", "away_for_scans", "bytes", "by", "code", "count", "protocol", "ticks"}};
}

YamlKeys trigger_section()
{
    return {"'when'", {"call", "frame", "every", "until", "after", "since", "probability"}};
}

YamlKeys event_section() { return {"event", {"at", "scan", "do", "grabber", "camera"}}; }

bool is_loss(FaultKind kind)
{
    return row_of(kind).effect == Effect::loses || kind == FaultKind::camera_lost_while_streaming ||
           kind == FaultKind::grabber_lost_while_streaming;
}

bool is_any_call(FaultKind kind)
{
    return kind == FaultKind::call_fails || kind == FaultKind::call_delays ||
           kind == FaultKind::call_leaves_output_untouched;
}

bool is_any(FunctionSet set, FunctionSet of) { return (set & of) != 0; }

FunctionSet status_functions()
{
    FunctionSet set = 0;
    for (size_t i = 0; i < function_count; ++i) {
        const auto function = static_cast<Function>(i);
        if (row_of(function).result == ResultType::status)
            set |= functions(function);
    }
    return set;
}

constexpr FunctionSet with_names = functions(Function::grabber_integer, Function::grabber_enumeration,
                                             Function::camera_integer, Function::camera_enumeration);
constexpr FunctionSet with_commands = functions(Function::stream_info, Function::buffer_info);

/// Whether a fault of these functions can be given this key.
bool is_allowed(std::string_view key, const FaultRule& rule)
{
    const FaultKindRow& row = row_of(rule.kind);
    if (key == "kind" || key == "grabber" || key == "camera" || key == "when" || key == "times")
        return true;
    if (key == "function")
        return is_any_call(rule.kind);
    if (key == "name")
        return is_any(rule.functions, with_names) && rule.kind != FaultKind::pixel_format_unknown;
    if (key == "command")
        return is_any(rule.functions, with_commands);
    if (key == "status")
        return row.effect == Effect::fails && is_any(rule.functions, status_functions());
    if (key == "time")
        return row.has_time;
    if (key == "away_for" || key == "away_for_scans")
        return is_loss(rule.kind);
    return row.amount.name != nullptr && key == row.amount.name;
}

std::vector<std::string_view> allowed_keys(const FaultRule& rule)
{
    std::vector<std::string_view> keys;
    const auto can_be_given = [&](std::string_view key) { return is_allowed(key, rule); };
    const YamlKeys section = fault_section();
    std::copy_if(section.keys.begin(), section.keys.end(), std::back_inserter(keys), can_be_given);
    return keys;
}

YamlChoices<FaultKind> kinds()
{
    YamlChoices<FaultKind> choices;
    for (size_t i = 0; i < fault_kind_count; ++i)
        choices.emplace_back(row_of(static_cast<FaultKind>(i)).name, static_cast<FaultKind>(i));
    return choices;
}

YamlChoices<FunctionSet> functions_of(FaultKind kind)
{
    YamlChoices<FunctionSet> choices;
    for (size_t i = 0; i < function_count; ++i) {
        const auto function = static_cast<Function>(i);
        if (has(row_of(kind).functions, function))
            choices.emplace_back(row_of(function).name, functions(function));
    }
    return choices;
}

void read_place(const YamlMap& map, Place& place)
{
    map.integer("grabber", place.grabber, 0, most_grabbers);
    if (map.integer("camera", place.camera, 0, most_cameras - 1) && !map.has("grabber"))
        map.report("'camera' is given without its grabber", "grabber and camera");
}

/// The keys of a trigger that do not go with each other or with the kind.
void check_trigger(const YamlMap& map, Opportunity opportunity)
{
    const bool is_of_frames = opportunity == Opportunity::frame;
    if (is_of_frames && map.has("call"))
        map.report("'call' applies to call faults only", "frame, every, until, after, since, probability");
    if (!is_of_frames && map.has("frame"))
        map.report("'frame' applies to frame faults only", "call, every, until, after, probability");
    if (!is_of_frames && map.has("since"))
        map.report("'since' applies to frame faults only", "call, every, until, after, probability");
    if (map.has("since") && !map.has("after"))
        map.report("'since' needs 'after'", "after and since");
}

Trigger read_trigger(const YamlMap& map, Opportunity opportunity)
{
    Trigger trigger;
    trigger.is_by_frame = opportunity == Opportunity::frame;
    check_trigger(map, opportunity);
    const bool has_every = map.integer("every", trigger.every, 1, any_number);
    if (has_every)
        trigger.first = trigger.every - 1;
    bool has_first = map.integer("frame", trigger.first, 0, any_number);
    uint64_t call = 0;
    if (map.integer("call", call, 1, any_number)) {
        trigger.first = call - 1;
        has_first = true;
    }
    uint64_t until = 0;
    if (map.integer("until", until, trigger.is_by_frame ? 0 : 1, any_number)) {
        trigger.last = trigger.is_by_frame ? until : until - 1;
        if (trigger.last < trigger.first)
            map.report("'until' comes before the first occurrence", "a later one");
    } else if (has_first && !has_every) {
        trigger.last = trigger.first;
    }
    std::chrono::nanoseconds after{0};
    if (map.duration("after", after, std::chrono::nanoseconds{0}, longest_time))
        trigger.after = after;
    map.choice("since", trigger.since, {{"scan", Trigger::Since::scan}, {"start", Trigger::Since::start}});
    map.number("probability", trigger.probability, 0, 1);
    return trigger;
}

void read_absence(const YamlMap& map, Absence& absence)
{
    uint32_t scans = 0;
    if (map.integer("away_for_scans", scans, 1, any_status))
        absence.scans = scans;
    std::chrono::nanoseconds time{0};
    if (map.duration("away_for", time, std::chrono::nanoseconds{0}, longest_time))
        absence.time = time;
}

/// Functions, and then whatever else belongs to such a fault.
void read_parameters(const YamlMap& map, FaultRule& rule)
{
    const FaultKindRow& row = row_of(rule.kind);
    rule.functions = row.functions;
    rule.amount = row.amount.preset;
    if (is_any_call(rule.kind) && !map.has("function"))
        map.report("'function' is missing", "the name of a function");
    if (const auto function = map.find("function"); function && is_any_call(rule.kind)) {
        const auto chosen = function->choice(functions_of(rule.kind));
        rule.functions = chosen.value_or(rule.functions);
    }
    for (const std::string_view key : fault_section().keys) {
        if (map.has(key) && !is_allowed(key, rule))
            map.find(key)->report("'" + std::string{key} + "' does not apply to this kind of fault",
                                  joined(allowed_keys(rule)));
    }
    map.text("name", rule.name, longest_name, 1);
    uint32_t command = 0;
    if (map.integer("command", command, 0, any_status))
        rule.command = command;
    if (map.integer("status", rule.status, 0, any_status) && rule.status == status_ok)
        map.find("status")->wrong("any number except 0x3000, which means success");
    if (row.has_time && !map.duration("time", rule.time, std::chrono::nanoseconds{0}, longest_hold_up) &&
        !map.has("time"))
        map.report("'time' is missing", "a number with a unit, as in 100 ms");
    if (row.amount.name != nullptr)
        map.integer(row.amount.name, rule.amount, row.amount.least, row.amount.most);
    read_absence(map, rule.absence);
}

std::optional<FaultRule> read_fault(const YamlValue& value)
{
    const YamlMap map = value.map(fault_section());
    FaultRule rule;
    if (!map.has("kind"))
        map.report("'kind' is missing", "the name of a kind of fault");
    if (!map.choice("kind", rule.kind, kinds()))
        return std::nullopt;
    read_place(map, rule.place);
    read_parameters(map, rule);
    if (const auto when = map.find("when"))
        rule.when = read_trigger(when->map(trigger_section()), row_of(rule.kind).opportunity);
    map.integer("times", rule.times, 1, any_number);
    return rule;
}

PlugEvent read_event(const YamlValue& value)
{
    const YamlMap map = value.map(event_section());
    PlugEvent event;
    if (!map.has("do"))
        map.report("'do' is missing", "unplug, plug");
    map.choice("do", event.is_plugged, {{"unplug", false}, {"plug", true}});
    if (!map.has("grabber"))
        map.report("'grabber' is missing", "the index of a grabber");
    read_place(map, event.place);
    if (map.has("at") == map.has("scan"))
        map.report("an event needs a time or a scan, but not both", "at, scan");
    std::chrono::nanoseconds at{0};
    if (map.duration("at", at, std::chrono::nanoseconds{0}, longest_time))
        event.at = at;
    map.integer("scan", event.scan, 1, any_number);
    return event;
}

} // namespace

std::vector<std::string_view> fault_keys()
{
    return {"seed", "faults_enabled", "call_log", "faults", "events"};
}

std::vector<YamlKeys> fault_sections() { return {fault_section(), trigger_section(), event_section()}; }

FaultPlan read_fault_plan(const YamlMap& file)
{
    FaultPlan plan;
    file.integer("seed", plan.seed, 0, any_number);
    file.flag("faults_enabled", plan.is_enabled);
    if (const auto log = file.find("call_log")) {
        plan.call_log = log->path("a file").value_or("");
    }
    for (const YamlValue& value : file.list("faults", most_faults)) {
        if (const auto rule = read_fault(value))
            plan.faults.push_back(*rule);
    }
    for (const YamlValue& value : file.list("events", most_faults))
        plan.events.push_back(read_event(value));
    return plan;
}

} // namespace zvsim
