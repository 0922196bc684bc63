#pragma once

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Process.h"
#include "unit/tools/TemporaryFolder.h"

namespace zvgentl::test {

using Words = std::vector<std::string>;

using testing::HasSubstr;
using testing::StartsWith;

inline std::size_t count_files(const std::filesystem::path& folder)
{
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

/// What a program left behind.
struct Ended {
    int code{-1}; // the exit code, or minus the number of the signal that ended it
    std::string output;
    std::string errors;

    nlohmann::json json() const { return nlohmann::json::parse(output); }
};

/// What the program wrote, with its line ends as \n: texts end lines as the system does.
Ended with_plain_lines(Ended ended);

/// `zvgentl` as a process of its own, with settings, log and temporary files in a folder of its own.
class Program {
public:
    explicit Program(const Words& arguments, const Variables& variables = {});

    /// For the process only; an empty value removes the variable.
    Program& with(const std::string& variable, const std::string& value);
    /// Shows its errors on a terminal instead of a file.
    Program& on_terminal();
    /// Starts this command of a shell, in which $0 is `zvgentl` and $1 to $9 are the arguments.
    Program& through_shell(const std::string& command);

    void start();
    void interrupt(const Interruption& way) const { m_process->interrupt(way); }
    Ended wait();
    Ended run()
    {
        start();
        return wait();
    }

    const TemporaryFolder& folder() const { return m_folder; }
    /// Whether everything that it created for temporary use is gone.
    bool left_nothing_temporary() const;

private:
    TemporaryFolder m_folder;
    Start m_start;
    std::unique_ptr<Process> m_process;
};

} // namespace zvgentl::test
