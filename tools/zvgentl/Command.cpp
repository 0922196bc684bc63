#include "zvgentl/Command.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <utility>

#include <fmt/format.h>

namespace zvgentl::tool {

namespace {

constexpr const char* description =
    "Lists the frame grabbers and cameras that a GenTL producer offers, shows and sets their features, and "
    "grabs frames from them.";

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl list\n"
    "  zvgentl grab --frames 100 --output pictures\n"
    "  zvgentl features --category ImageFormatControl\n"
    "  zvgentl set ExposureTime=2500\n"
    "  zvgentl grab --help\n"
    "\n"
    "Which producer is loaded: the one named with --cti; else those in the folders of\n"
    "the variable GENICAM_GENTL64_PATH; else the .cti file beside this program.\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line, 130 interrupted (Ctrl-C).";

std::vector<CommandMaker>& makers()
{
    static std::vector<CommandMaker> all; // here, because registrations run in any order before main
    return all;
}

int run_command(Command& command)
{
    try {
        return command.run();
    } catch (const std::exception& reason) {
        std::cout.flush();
        fmt::print(stderr, "zvgentl {}: {}\n", command.name(), reason.what());
        return exit_failure;
    }
}

} // namespace

CommandRegistration::CommandRegistration(CommandMaker maker) { makers().push_back(maker); }

std::vector<std::unique_ptr<Command>> make_commands()
{
    std::vector<std::unique_ptr<Command>> commands;
    for (const CommandMaker maker : makers())
        commands.push_back(maker());
    std::sort(commands.begin(), commands.end(),
              [](const auto& left, const auto& right) { return left->name() < right->name(); });
    return commands;
}

void add_producer_option(CLI::App& app, std::string& cti)
{
    app.add_option("--cti", cti,
                   "Producer to load (a .cti file, or a folder of them); without it those in the folders of "
                   "GENICAM_GENTL64_PATH, or else the one beside this program")
        ->type_name("PATH");
}

int run_program(int argc, const char* const* argv)
{
    CLI::App app(description, "zvgentl");
    app.footer(footer);
    app.set_version_flag("--version", "zvgentl " ZV_VERSION);
    app.require_subcommand(1);

    const auto commands = make_commands();
    std::vector<std::pair<CLI::App*, Command*>> parsers;
    for (const auto& command : commands) {
        CLI::App* const parser = app.add_subcommand(command->name(), command->summary());
        command->add_options(*parser);
        parsers.emplace_back(parser, command.get());
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& reason) {
        return app.exit(reason) == 0 ? exit_success : exit_usage;
    }
    for (const auto& [parser, command] : parsers)
        if (parser->parsed())
            return run_command(*command);
    return exit_usage;
}

} // namespace zvgentl::tool
