#include "zvgentl/CommandLine.h"

#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "genapi/values.h"
#include "gentl/texts.h"
#include "platform/terminal.h"
#include "platform/visible_text.h"
#include "zvgentl/Commands.h"
#include "zvgentl/LoggerLibrary.h"
#include "zvgentl/Output.h"
#include "zvgentl/OutputFile.h"

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
    "Options of a command may stand before it, and `zvgentl help grab` is `zvgentl grab --help`.\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line, 130 interrupted (Ctrl-C), 129 and 143 ended by\n"
    "a closed terminal and by a request to end, 141 nobody reads the output any more.";

constexpr const char* help_command = "help";

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

/// Runs something that prints. What it throws is reported under its name, and gives the exit code.
int run_reporting(const std::string& name, const std::function<int()>& work)
{
    try {
        return work();
    } catch (const OutputError& reason) {
        if (reason.is_broken_pipe())
            return exit_broken_pipe;
        print_error(fmt::format("{}: {}\n", name, reason.what()));
    } catch (const FileError& reason) { // of which no log knows more
        print_error(fmt::format("{}: {}\n", name, platform::visible_lines(reason.what())));
    } catch (const std::exception& reason) {
        print_error(fmt::format("{}: {}\n{}", name, platform::visible_lines(reason_of(reason)), log_hint()));
    }
    return exit_failure;
}

using Words = std::vector<std::string>;

bool takes_value(const CLI::App& app, const std::string& word)
{
    const auto& parsers = app.get_subcommands(nullptr);
    return std::any_of(parsers.begin(), parsers.end(), [&](const CLI::App* parser) {
        const CLI::Option* const option = parser->get_option_no_throw(word);
        return option != nullptr && option->get_items_expected_max() > 0;
    });
}

/// The place of the command: the first word that is neither an option nor its value.
std::size_t place_of_command(const CLI::App& app, const Words& words)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i].empty() || words[i][0] != '-')
            return i;
        if (takes_value(app, words[i]))
            ++i;
    }
    return words.size();
}

std::string unknown_command(const std::string& word)
{
    std::string closest = help_command;
    for (const auto& [name, registered] : registered_commands())
        if (letter_distance(lower_case(word), name) < letter_distance(lower_case(word), closest))
            closest = name;
    const bool is_close =
        letter_distance(lower_case(word), closest) <= std::max<std::size_t>(2, word.size() / 2);
    return fmt::format("there is no command \"{}\"; {}", platform::visible(word),
                       is_close ? fmt::format("did you mean {}?", closest)
                                : "`zvgentl --help` lists the commands");
}

/// The words with the command in front; `help` becomes the option of that name. Throws std::runtime_error
/// when there is no such command, and when none is given.
Words with_command_first(const CLI::App& app, Words words)
{
    const auto command = words.begin() + static_cast<std::ptrdiff_t>(place_of_command(app, words));
    if (command == words.end()) {
        for (const char* const option : {"--help", "-h", "--version"})
            if (std::find(words.begin(), words.end(), option) != words.end())
                return {option};
        throw std::runtime_error("a command is missing; `zvgentl --help` lists the commands");
    }
    if (*command == help_command) {
        words.erase(command);
        return words.empty() ? Words{"--help"} : with_command_first(app, {words.front(), "--help"});
    }
    if (registered_commands().count(*command) == 0)
        throw std::runtime_error(unknown_command(*command));
    std::rotate(words.begin(), command, command + 1);
    return words;
}

/// Reads the command line. Answers the exit code when there is nothing to run.
std::optional<int> parse(CLI::App& app, Words words)
{
    try {
        words = with_command_first(app, std::move(words));
        std::reverse(words.begin(), words.end()); // as the parser takes them
        app.parse(std::move(words));
        return std::nullopt;
    } catch (const CLI::ParseError& reason) {
        std::ostringstream output;
        std::ostringstream errors;
        const bool is_answered = app.exit(reason, output, errors) == 0;
        print_error(platform::visible_lines(errors.str()));
        print_output(output.str());
        return is_answered ? exit_success : exit_usage;
    } catch (const std::runtime_error& reason) {
        print_error(fmt::format("zvgentl: {}\n", platform::visible_lines(reason.what())));
        return exit_usage;
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

void OptionList::optional_words(const char* name, const char* help, std::vector<std::string>& target)
{
    m_parser.add_option(name, target, help)->type_name("");
}

void OptionList::needs(const char* name, const char* other)
{
    m_parser.get_option(name)->needs(m_parser.get_option(other));
}

void OptionList::excludes(const char* name, const char* other)
{
    m_parser.get_option(name)->excludes(m_parser.get_option(other));
}

void OptionList::note(const char* name, bool& given)
{
    m_parser.get_option(name)->each([&given](const std::string&) { given = true; });
}

CommandRegistration::CommandRegistration(const CommandHelp& help, Maker maker)
{
    registered_commands()[help.name] = {help, std::move(maker)};
}

int run_program(int argc, const char* const* argv)
{
    platform::prepare_standard_streams();
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
    app.add_subcommand(help_command, "Explain a command");
    std::optional<int> code;
    const int reported = run_reporting("zvgentl", [&] {
        code = parse(app, Words(argv + 1, argv + argc));
        return code.value_or(exit_success);
    });
    if (code || reported != exit_success)
        return reported;
    const CLI::App& chosen = *app.get_subcommands().front();
    return run_reporting("zvgentl " + chosen.get_name(), [&] { return commands.at(&chosen)->run(); });
}

} // namespace zvgentl::tool
