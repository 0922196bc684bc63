#include "Program.h"

#include <array>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <pty.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

std::vector<char*> pointers_to(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

void redirect(const fs::path& file, int descriptor)
{
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(opened, descriptor);
}

} // namespace

Program::Program(const std::vector<std::string>& arguments) : m_arguments(arguments)
{
    fs::create_directory(m_folder / "tmp");
    write_text(m_folder / "logger.properties", "logging.loggers.root.level = none\n");
    with("HOME", m_folder.path().string());
    with("XDG_CONFIG_HOME", (m_folder / "config").string());
    with("XDG_STATE_HOME", (m_folder / "state").string());
    with("TMPDIR", (m_folder / "tmp").string());
    with("ZV_SETTINGS_FILE", (m_folder / "settings.properties").string());
    with("ZV_LOGGER_CONFIG", (m_folder / "logger.properties").string());
    with("GENICAM_GENTL64_PATH", "");
    for (const char* const variable : {"ZV_GRABBER_CONFIG", "ZV_GRABBER_PICTURES", "ZV_GRABBER_RATE",
                                       "ZV_GRABBER_PIXEL_FORMAT", "ZV_GRABBER_SIZE"})
        with(variable, "");
}

Program& Program::with(const std::string& variable, const std::string& value)
{
    m_variables[variable] = value;
    return *this;
}

Program& Program::on_terminal()
{
    m_wants_terminal = true;
    return *this;
}

std::vector<std::string> Program::environment_block() const
{
    std::vector<std::string> block;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (m_variables.count(text.substr(0, text.find('='))) == 0)
            block.push_back(text);
    }
    for (const auto& [variable, value] : m_variables)
        if (!value.empty())
            block.push_back(variable + "=" + value);
    return block;
}

void Program::start()
{
    const auto environment = environment_block();
    int program_end = -1;
    if (m_wants_terminal && openpty(&m_terminal, &program_end, nullptr, nullptr, nullptr) != 0)
        throw std::runtime_error("no terminal to be had");
    m_process = fork();
    if (m_process == 0) {
        redirect(m_folder / "output", STDOUT_FILENO);
        if (m_wants_terminal)
            dup2(program_end, STDERR_FILENO);
        else
            redirect(m_folder / "errors", STDERR_FILENO);
        become_program(environment);
    }
    if (program_end >= 0)
        close(program_end);
}

void Program::become_program(const std::vector<std::string>& environment) const
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_DFL);
    std::vector<std::string> words{ZVGENTL_PROGRAM};
    words.insert(words.end(), m_arguments.begin(), m_arguments.end());
    std::vector<std::string> variables = environment;
    execve(ZVGENTL_PROGRAM, pointers_to(words).data(), pointers_to(variables).data());
    _exit(127);
}

void Program::send(int signal) const { kill(m_process, signal); }

std::string Program::read_terminal() const
{
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t count = 0;
         (count = read(m_terminal, part.data(), part.size())) > 0;) // fails when the other end closes
        text.append(part.data(), static_cast<std::size_t>(count));
    close(m_terminal);
    return text;
}

Ended Program::wait()
{
    Ended ended;
    if (m_wants_terminal)
        ended.errors = read_terminal();
    int status = 0;
    waitpid(m_process, &status, 0);
    ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    ended.output = read_text(m_folder / "output");
    if (!m_wants_terminal)
        ended.errors = read_text(m_folder / "errors");
    return ended;
}

bool Program::left_nothing_temporary() const { return fs::is_empty(m_folder / "tmp"); }

FileWatch::FileWatch(const fs::path& folder) : m_descriptor(inotify_init1(IN_CLOEXEC))
{
    if (inotify_add_watch(m_descriptor, folder.c_str(), IN_MOVED_TO) < 0)
        throw std::runtime_error("cannot watch " + folder.string());
}

FileWatch::~FileWatch() { close(m_descriptor); }

void FileWatch::wait_for(const std::string& name) const
{
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t size = read(m_descriptor, buffer.data(), buffer.size());
        for (ssize_t at = 0; at < size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            if (name == event->name)
                return;
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
}

} // namespace zvgentl::test
