#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace zvgentl::tool {

/// What the program answers to the shell; 130 (interrupted) stands in platform/Interrupt.h.
constexpr int exit_success = 0;
constexpr int exit_failure = 1; // something went wrong while running
constexpr int exit_usage = 2;   // the command line is wrong

/// One command of the program. A command lives in one file of commands/ and makes itself known there:
/// `const CommandRegistration registration([] { return std::unique_ptr<Command>(new MyCommand); });`
class Command {
public:
    virtual ~Command() = default;

    virtual std::string name() const = 0;
    /// One line for the list of commands.
    virtual std::string summary() const = 0;
    /// Called once; what the options are bound to must live as long as the command.
    virtual void add_options(CLI::App& app) = 0;
    /// Answers the exit code. Exceptions are reported by the caller and give exit_failure.
    virtual int run() = 0;
};

using CommandMaker = std::unique_ptr<Command> (*)();

/// A static object of this type adds a command to the program.
class CommandRegistration {
public:
    explicit CommandRegistration(CommandMaker maker);
};

/// One object of each command, sorted by name.
std::vector<std::unique_ptr<Command>> make_commands();

/// Adds `--cti`, which every command that loads a producer has.
void add_producer_option(CLI::App& app, std::string& cti);

/// The whole program: reads the command line and runs a command. Answers the exit code.
int run_program(int argc, const char* const* argv);

} // namespace zvgentl::tool
