#include <algorithm>
#include <cstdio>

#include <fmt/core.h>

#include "genapi/values.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/ModuleInfo.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

struct InfoOptions : DeviceOptions {
    PortKind module{PortKind::buffer};
    bool raw{false};
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl info\n"
    "  zvgentl info --down-to system\n"
    "  zvgentl info --device Device10 --raw\n"
    "  zvgentl info --json | jq '.info[] | select(.module == \"stream\") | {name, value}'\n"
    "\n"
    "Opens the first device, a stream and a buffer, and asks every one of the standard's information\n"
    "commands: name and number of the command, type and value of the answer. Where the producer does\n"
    "not answer, the error code is shown. --raw adds the bytes of each answer, at most 64.\n"
    "\n"
    "Exit codes: 0 shown, 1 failed, 2 wrong command line. A command without an answer is no failure.";

void describe(OptionList& list, InfoOptions& options)
{
    describe_device(list, options);
    list.choice<PortKind>("-m,--down-to", "MODULE",
                          "Open modules only down to this one: system, interface, device, stream or buffer "
                          "[buffer]",
                          options.module,
                          {{"system", PortKind::system},
                           {"interface", PortKind::iface},
                           {"device", PortKind::device},
                           {"stream", PortKind::stream},
                           {"buffer", PortKind::buffer}});
    list.flag("--raw", "Show the bytes of each answer too", options.raw);
    list.flag("--json", "Print JSON instead of text", options.json);
}

Value or_null(const std::string& text) { return text.empty() ? Value() : Value(text); }

std::vector<NamedValues> rows_of(const std::vector<ModuleInfo>& modules)
{
    std::vector<NamedValues> rows;
    for (const ModuleInfo& module : modules)
        for (const InfoEntry& entry : module.entries) {
            const bool has_answer = entry.problem.empty();
            rows.push_back({{"module", module.module},
                            {"function", entry.function},
                            {"name", entry.name},
                            {"command", std::int64_t{entry.command}},
                            {"type", or_null(entry.type)},
                            {"value", has_answer ? Value(entry.value) : Value()},
                            {"bytes", has_answer ? Value(bytes_text(entry.bytes)) : Value()},
                            {"problem", or_null(entry.problem)}});
        }
    return rows;
}

int show_info(const InfoOptions& options)
{
    PortOptions port;
    static_cast<DeviceOptions&>(port) = options;
    port.port = options.module;
    const OpenPort open(port);
    const auto modules = read_modules(open);
    print_output(options.json ? json_text("info", rows_of(modules))
                              : to_text(modules, options.raw ? RawBytes::shown : RawBytes::left_out));
    return exit_success;
}

const CommandRegistration registration({"info", "Show every information command of every module", footer},
                                       describe, show_info);

} // namespace

} // namespace zvgentl::tool
