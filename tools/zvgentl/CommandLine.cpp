#include "zvgentl/CommandLine.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <map>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "gentl/texts.h"
#include "platform/visible_text.h"
#include "zvgentl/Commands.h"
#include "zvgentl/LoggerLibrary.h"
#include "zvgentl/TemporarySettings.h"

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
    "The producer that is loaded is the one given with --cti; otherwise those in the folders of\n"
    "the variable GENICAM_GENTL64_PATH; otherwise the .cti file next to this program.\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line, 130 interrupted (Ctrl-C).";

struct Registered {
    CommandHelp help;
    std::function<std::unique_ptr<Command>()> make;
};

/// By name, which is the order in which the help lists them.
std::map<std::string, Registered>& registered_commands()
{
    static std::map<std::string, Registered> all; // here, because registrations run in any order before main
    return all;
}

int run_command(const std::string& name, const Command& command)
{
    TemporarySettings::remove_leftovers();
    try {
        return command.run();
    } catch (const std::exception& reason) {
        std::cout.flush();
        fmt::print(stderr, "zvgentl {}: {}\n{}", name, platform::visible_lines(reason.what()), log_hint());
        return exit_failure;
    }
}

} // namespace

void OptionList::text(const char* names, const char* value, const char* help, std::string& target)
{
    m_parser.add_option(names, target, help)->type_name(value);
}

void OptionList::number(const char* names, const char* value, const char* help, std::uint64_t& target,
                        Range range)
{
    m_parser.add_option(names, target, help)
        ->type_name(value)
        ->check(CLI::Range(range.least, range.most).description(""));
}

void OptionList::word_of(const char* names, const char* value, const char* help,
                         const std::vector<std::string>& words, std::function<void(std::size_t)> choose)
{
    m_parser
        .add_option_function<std::string>(
            names,
            [words, choose = std::move(choose)](const std::string& word) {
                choose(static_cast<std::size_t>(std::find(words.begin(), words.end(), word) - words.begin()));
            },
            help)
        ->type_name(value)
        ->check(CLI::Validator(
            [words](const std::string& word) {
                return std::find(words.begin(), words.end(), word) != words.end()
                           ? std::string()
                           : "\"" + word + "\" is not one of " + joined(words, ", ");
            },
            ""));
}

void OptionList::flag(const char* names, const char* help, bool& target)
{
    m_parser.add_flag_callback(
        names, [&target] { target = !target; }, help);
}

void OptionList::repeated(const char* names, const char* value, const char* help,
                          std::function<bool(const std::string&)> add)
{
    const std::string name = names;
    m_parser
        .add_option_function<std::vector<std::string>>(
            names,
            [name = name.substr(name.find("--")), form = std::string(value),
             add = std::move(add)](const std::vector<std::string>& words) {
                for (const auto& word : words)
                    if (!add(word))
                        throw CLI::ValidationError(name,
                                                   fmt::format("\"{}\" is not of the form {}", word, form));
            },
            help)
        ->type_name(value)
        ->allow_extra_args(false);
}

void OptionList::positional(const char* name, const char* help, std::string& target)
{
    m_parser.add_option(name, target, help)->required()->type_name("");
}

void OptionList::positional(const char* name, const char* help, std::vector<std::string>& target)
{
    m_parser.add_option(name, target, help)->required()->type_name("");
}

void OptionList::needs(const char* name, const char* other)
{
    m_parser.get_option(name)->needs(m_parser.get_option(other));
}

CommandRegistration::CommandRegistration(const CommandHelp& help, Maker maker)
{
    registered_commands()[help.name] = {help, std::move(maker)};
}

int run_program(int argc, const char* const* argv)
{
    CLI::App app(description, "zvgentl");
    app.footer(footer);
    app.set_version_flag("--version", "zvgentl " ZV_VERSION);
    app.require_subcommand(1);

    std::map<const CLI::App*, std::unique_ptr<Command>> commands;
    for (const auto& [name, registered] : registered_commands()) {
        CLI::App* const parser = app.add_subcommand(name, registered.help.summary);
        parser->footer(registered.help.footer);
        OptionList list(*parser);
        (commands[parser] = registered.make())->describe(list);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& reason) {
        std::ostringstream errors;
        const int code = app.exit(reason, std::cout, errors);
        std::cerr << platform::visible_lines(errors.str());
        return code == 0 ? exit_success : exit_usage;
    }
    const CLI::App& chosen = *app.get_subcommands().front();
    return run_command(chosen.get_name(), *commands.at(&chosen));
}

} // namespace zvgentl::tool
