#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zvgentl/GrabOptions.h"
#include "zvgentl/PortOptions.h"

// The commands as functions over their options. What is declared here is in commands/, one file for each
// command; a command that no other code calls needs no declaration.

namespace zvgentl::tool {

/// The exit codes of the commands; platform/Interrupt.h has those of interrupted ones.
constexpr int exit_success = 0;
constexpr int exit_failure = 1;       // something went wrong while running
constexpr int exit_usage = 2;         // the command line is wrong
constexpr int exit_broken_pipe = 141; // nobody reads the output any more; as if SIGPIPE had ended the program

struct ListOptions {
    std::string cti;
    bool streams{false};
    bool json{false};
};

struct FeaturesOptions {
    PortOptions port;
    Assignments settings;
    std::string category{"Root"};
    bool json{false};
};

struct GetOptions {
    PortOptions port;
    Assignments settings;
    std::vector<std::string> names;
    bool json{false};
};

struct SetOptions {
    PortOptions port;
    std::vector<std::string> words; // each NAME=VALUE; or just a name and a value
};

struct ExecOptions {
    PortOptions port;
    Assignments settings;
    std::string name;
    std::uint64_t timeout_ms{5000};
};

struct XmlOptions {
    PortOptions port;
    std::string output; // a file; empty: the terminal
    bool raw{false};
};

/// Each does its work and prints its results. Answers the exit code; throws std::exception when it fails.
int run(const ListOptions& options);
int run(const FeaturesOptions& options);
int run(const GetOptions& options);
int run(const SetOptions& options);
int run(const ExecOptions& options);
int run(const XmlOptions& options);
int run(const GrabOptions& options);

} // namespace zvgentl::tool
