#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zvgentl::test {

using Variables = std::map<std::string, std::string>;

/// The variables from which programs of this system learn where the user's folders are, all below home, and
/// where to put temporary files.
Variables folders_of_user(const std::filesystem::path& home, const std::filesystem::path& temporary);

/// A way in which the system asks programs to end.
struct Interruption {
    const char* name;
    int number;
};

extern const std::vector<Interruption> interruptions;

/// How a program is started. Its variables are added to this process's; an empty one is removed.
struct Start {
    std::filesystem::path program;
    std::vector<std::string> arguments;
    Variables variables;
    std::filesystem::path output;
    std::filesystem::path errors; // empty: they are shown on a terminal
};

/// A program that was started; it is ended with the object if nobody waited for its end. The bodies are in
/// one folder per system.
class Process {
public:
    explicit Process(const Start& start);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void interrupt(const Interruption& way) const;
    /// What it shows on its terminal until it ends.
    std::string read_terminal() const;
    /// Its exit code, once it has ended.
    int wait();

private:
    struct Handles;
    std::unique_ptr<Handles> m_handles;
};

} // namespace zvgentl::test
