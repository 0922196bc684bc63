#include "system/tools/Process.h"

#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zvgentl::test {

namespace fs = std::filesystem;

const std::vector<Interruption> interruptions{{"Int", SIGINT}, {"Term", SIGTERM}, {"Hup", SIGHUP}};

Variables folders_of_user(const fs::path& home, const fs::path& temporary)
{
    return {{"HOME", home.string()},
            {"XDG_CONFIG_HOME", (home / "config").string()},
            {"XDG_STATE_HOME", (home / "state").string()},
            {"TMPDIR", temporary.string()}};
}

struct Process::Handles {
    pid_t process{-1};
    int terminal{-1}; // our end
};

namespace {

std::vector<char*> pointers_to(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environment_block(const Variables& variables)
{
    std::vector<std::string> block;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (variables.count(text.substr(0, text.find('='))) == 0)
            block.push_back(text);
    }
    for (const auto& [variable, value] : variables)
        if (!value.empty())
            block.push_back(variable + "=" + value);
    return block;
}

void redirect(const fs::path& file, int descriptor)
{
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(opened, descriptor);
}

[[noreturn]] void become_program(const Start& start, std::vector<std::string> environment)
{
    for (const Interruption& way : interruptions)
        std::signal(way.number, SIG_DFL);
    std::vector<std::string> words{start.program.string()};
    words.insert(words.end(), start.arguments.begin(), start.arguments.end());
    execve(start.program.c_str(), pointers_to(words).data(), pointers_to(environment).data());
    _exit(127);
}

} // namespace

Process::Process(const Start& start) : m_handles(std::make_unique<Handles>())
{
    const auto environment = environment_block(start.variables);
    const bool wants_terminal = start.errors.empty();
    int program_end = -1;
    if (wants_terminal && openpty(&m_handles->terminal, &program_end, nullptr, nullptr, nullptr) != 0)
        throw std::runtime_error("no terminal to be had");
    m_handles->process = fork();
    if (m_handles->process == 0) {
        redirect(start.output, STDOUT_FILENO);
        if (wants_terminal)
            dup2(program_end, STDERR_FILENO);
        else
            redirect(start.errors, STDERR_FILENO);
        become_program(start, environment);
    }
    if (program_end >= 0)
        close(program_end);
}

Process::~Process()
{
    if (m_handles->process > 0) {
        kill(m_handles->process, SIGKILL);
        waitpid(m_handles->process, nullptr, 0);
    }
    if (m_handles->terminal >= 0)
        close(m_handles->terminal);
}

void Process::interrupt(const Interruption& way) const { kill(m_handles->process, way.number); }

std::string Process::read_terminal() const
{
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t count = 0; (count = read(m_handles->terminal, part.data(), part.size())) > 0;)
        text.append(part.data(), static_cast<std::size_t>(count)); // fails when the other end closes
    return text;
}

int Process::wait()
{
    int status = 0;
    waitpid(std::exchange(m_handles->process, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace zvgentl::test
