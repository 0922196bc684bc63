#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <fmt/core.h>

#include "genapi/values.h"
#include "gentl/texts.h"
#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/Output.h"
#include "zvgentl/PortOptions.h"
#include "zvgentl/SettingsFile.h"
#include "zvgentl/TextTable.h"

namespace zvgentl::tool {

namespace {

struct SettingsOptions {
    std::vector<std::string> words; // an action and what it works on; empty: list
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl settings\n"
    "  zvgentl settings get GenTL.Stream.BufferAllocMin\n"
    "  zvgentl settings set GenTL.Stream.BufferAllocMin=8\n"
    "  zvgentl settings unset GenTL.Stream.BufferAllocMin\n"
    "\n"
    "Shows and changes the settings of ZVGRLibGenTL.cti: `list` (or nothing) shows all with value,\n"
    "default and meaning, and the file that they are in; `get` prints values, `set` writes them, and\n"
    "`unset` removes them, so that the defaults count again. The file is the one that ZV_SETTINGS_FILE\n"
    "names, else the user's, else the machine's; the machine's is never written. Programs that run see\n"
    "a change when they next read the setting. GENICAM_GENTL64_PATH does not matter.\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line.";

void describe(OptionList& list, SettingsOptions& options)
{
    list.optional_words("ACTION", "list, get KEY..., set KEY=VALUE..., or unset KEY... [list]",
                        options.words);
    list.flag("--json", "Print JSON instead of text", options.json);
}

/// A key with all that is known of it.
struct Row {
    std::string key;
    std::string value; // as written; empty when the file does not have it
    const SettingKey* known{nullptr};
};

std::vector<Row> rows_of(const SettingsFile& file)
{
    std::vector<Row> rows;
    for (const SettingKey& key : setting_keys())
        rows.push_back({key.name, {}, &key});
    for (const SettingLine& line : settings_of(file.text)) {
        const auto row = std::find_if(rows.begin(), rows.end(),
                                      [&line](const Row& candidate) { return candidate.key == line.key; });
        if (row != rows.end())
            row->value = line.value;
        else
            rows.push_back({line.key, line.value, nullptr});
    }
    return rows;
}

/// What counts: the written value, if it is a number; otherwise the default.
std::string present_value(const Row& row)
{
    if (parse_setting(row.value))
        return row.value;
    if (row.known != nullptr && row.known->default_value)
        return std::to_string(*row.known->default_value);
    return "-";
}

std::string default_text(const Row& row)
{
    return row.known != nullptr && row.known->default_value ? std::to_string(*row.known->default_value) : "-";
}

std::string remark(const Row& row)
{
    if (!row.value.empty() && !parse_setting(row.value))
        return "! \"" + row.value + "\" is not a number from 0 to 4294967295; the default counts";
    if (row.known == nullptr)
        return "not a setting of this producer";
    return row.known->meaning;
}

std::string text_of(const SettingsFile& file, const std::vector<Row>& rows)
{
    std::string text = file.source.empty() ? "There is no settings file yet; the defaults count.\n"
                                           : "Settings of " + platform::visible(file.source) + "\n";
    if (file.target != file.source && !file.target.empty())
        text += "Changes are written to " + platform::visible(file.target) + "\n";
    std::vector<std::vector<std::string>> table{{"Key", "Value", "Default", "Meaning"}};
    for (const Row& row : rows)
        table.push_back({row.key, present_value(row), default_text(row), remark(row)});
    return text + table_text(table, "  ");
}

std::string json_of(const std::vector<Row>& rows)
{
    std::vector<NamedValues> list;
    for (const Row& row : rows) {
        const auto number = parse_setting(present_value(row));
        const bool has_default = row.known != nullptr && row.known->default_value;
        list.push_back(
            {{"key", row.key},
             {"value", number ? Value(std::int64_t{*number}) : Value()},
             {"default", has_default ? Value(std::int64_t{*row.known->default_value}) : Value()},
             {"is_set", !row.value.empty()},
             {"read_when", row.known == nullptr ? Value() : Value(std::string(row.known->read_when))},
             {"meaning", remark(row)}});
    }
    return json_text("settings", list);
}

const Row& find(const std::vector<Row>& rows, const std::string& key)
{
    std::vector<std::string> names;
    for (const Row& row : rows) {
        if (row.key == key)
            return row;
        names.push_back(row.key);
    }
    const auto similar = near_names(key, names);
    throw std::runtime_error("there is no setting " + key +
                             (similar.empty() ? "; `zvgentl settings` lists them"
                                              : "; did you mean " + joined(similar, " or ") + "?"));
}

std::string change(const std::string& text, const SettingLine& line)
{
    return with_setting_changed(text, line.key, line.value);
}

std::string remove(const std::string& text, const SettingLine& line)
{
    return with_setting_removed(text, line.key);
}

int wrong_words()
{
    print_error(
        fmt::format("zvgentl settings: expected list, get KEY, set KEY=VALUE or unset KEY; see `zvgentl "
                    "settings --help`\n"));
    return exit_usage;
}

int set(const std::vector<std::string>& words, const std::vector<Row>& rows)
{
    const auto assignments = parse_assignments(words);
    if (!assignments)
        return wrong_words();
    std::vector<SettingLine> lines;
    for (const auto& [key, value] : *assignments) {
        std::ignore = find(rows, key);
        if (!parse_setting(value))
            throw std::runtime_error(fmt::format(
                "{} cannot be \"{}\"; allowed: 0 to 4294967295, decimal or hexadecimal (0x)", key, value));
        lines.push_back({key, value});
    }
    change_settings(settings_file, change, lines);
    return exit_success;
}

int unset(const std::vector<std::string>& keys, const std::vector<Row>& rows)
{
    std::vector<SettingLine> lines;
    lines.reserve(keys.size());
    for (const std::string& key : keys)
        lines.push_back({find(rows, key).key, {}});
    change_settings(settings_file, remove, lines);
    return exit_success;
}

int get(const std::vector<std::string>& keys, const std::vector<Row>& rows, const SettingsOptions& options)
{
    std::vector<Row> found;
    found.reserve(keys.size());
    for (const std::string& key : keys)
        found.push_back(find(rows, key));
    std::string text;
    for (const Row& row : found)
        text += (keys.size() > 1 ? row.key + "=" : "") + present_value(row) + "\n";
    print_output(options.json ? json_of(found) : text);
    return exit_success;
}

int run_settings(const SettingsOptions& options)
{
    const std::string action = options.words.empty() ? "list" : options.words.front();
    const std::vector<std::string> rest(options.words.begin() + (options.words.empty() ? 0 : 1),
                                        options.words.end());
    if ((action == "list") != rest.empty())
        return wrong_words();
    const SettingsFile file = read_settings_file(settings_file);
    const std::vector<Row> rows = rows_of(file);
    if (action == "get")
        return get(rest, rows, options);
    if (action == "set")
        return set(rest, rows);
    if (action == "unset")
        return unset(rest, rows);
    if (action != "list")
        return wrong_words();
    print_output(options.json ? json_of(rows) : text_of(file, rows));
    return exit_success;
}

const CommandRegistration registration({"settings", "Show and change the producer's settings", footer},
                                       describe, run_settings);

} // namespace

} // namespace zvgentl::tool
