#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gentl/Producer.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

/// The answer to one information command.
struct InfoEntry {
    std::string function; // that was asked
    std::string name;     // of the command in the standard
    std::int32_t command{0};
    std::string type;  // of the answer in the standard, such as UINT64; empty without an answer
    std::string value; // as text; empty without an answer
    std::vector<unsigned char> bytes;
    std::string problem; // why there is no answer: the name of the error code, or a sentence
};

/// All information commands of a module.
struct ModuleInfo {
    std::string module; // producer, system, interface, device, remote (the camera), stream, buffer
    std::vector<InfoEntry> entries;
};

/// Asks one command. Does not throw for what a producer answers: see `problem`.
InfoEntry read_info(const Producer& producer, const char* function, const char* name, std::int32_t command,
                    const InfoQuery& query);

/// The information of the module that was opened for its port, and of those above it. The camera has a port,
/// but no other commands.
std::vector<ModuleInfo> read_modules(const OpenPort& port);

enum class RawBytes { left_out, shown };

std::string to_text(const std::vector<ModuleInfo>& modules, RawBytes raw);

} // namespace zvgentl::tool
