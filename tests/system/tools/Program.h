#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Folder.h"

namespace zvgentl::test {

/// What a program left behind.
struct Ended {
    int code = -1; // the exit code, or minus the number of the signal that ended it
    std::string output;
    std::string errors;

    nlohmann::json json() const { return nlohmann::json::parse(output); }
};

/// `zvgentl` as a process of its own, with settings, log and temporary files in a folder of its own.
class Program {
public:
    explicit Program(const std::vector<std::string>& arguments);

    /// For the process alone; an empty value removes the variable.
    Program& with(const std::string& variable, const std::string& value);
    /// Shows its errors on a terminal instead of a file.
    Program& on_terminal();

    void start();
    void send(int signal) const;
    Ended wait();
    Ended run()
    {
        start();
        return wait();
    }

    const Folder& folder() const { return m_folder; }
    /// Whether everything that it created for temporary use is gone.
    bool left_nothing_temporary() const;

private:
    std::vector<std::string> environment_block() const;
    [[noreturn]] void become_program(const std::vector<std::string>& environment) const;
    std::string read_terminal() const;

    Folder m_folder;
    std::vector<std::string> m_arguments;
    std::map<std::string, std::string> m_variables;
    int m_process = -1;
    int m_terminal = -1; // our end
    bool m_wants_terminal = false;
};

/// Returns once a file of that name has appeared complete in the folder; the folder must exist before the
/// file.
class FileWatch {
public:
    explicit FileWatch(const std::filesystem::path& folder);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    void wait_for(const std::string& name) const;

private:
    int m_descriptor;
};

} // namespace zvgentl::test
