#include "Program.h"

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

// As users are called.
const fs::path temporary_folder = fs::u8path(u8"files of J\u00f6rg \u0416");

} // namespace

Program::Program(const Words& arguments, const Variables& variables)
{
    fs::create_directory(m_folder.path() / temporary_folder);
    write_text(m_folder / "logger.properties", "logging.loggers.root.level = none\n");
    m_start.program = ZVGENTL_PROGRAM;
    m_start.arguments = arguments;
    m_start.variables = folders_of_user(m_folder.path(), m_folder.path() / temporary_folder);
    m_start.output = m_folder / "output";
    m_start.errors = m_folder / "errors";
    with("ZV_SETTINGS_FILE", (m_folder / "settings.properties").u8string());
    with("ZV_LOGGER_CONFIG", (m_folder / "logger.properties").u8string());
    with("GENICAM_GENTL64_PATH", "");
    for (const char* const variable :
         {"ZV_GRABBER_CONFIG", "ZV_GRABBER_PICTURES", "ZV_GRABBER_RATE", "ZV_GRABBER_PIXEL_FORMAT",
          "ZV_GRABBER_SIZE", "ZV_GRABBER_FAULTS", "ZV_SETTINGS_OVERRIDE"})
        with(variable, "");
    for (const auto& [variable, value] : variables)
        with(variable, value);
}

Program& Program::with(const std::string& variable, const std::string& value)
{
    m_start.variables[variable] = value;
    return *this;
}

Program& Program::on_terminal()
{
    m_start.errors.clear();
    return *this;
}

Program& Program::through_shell(const std::string& command)
{
    m_start.arguments.insert(m_start.arguments.begin(), {"-c", command, m_start.program.string()});
    m_start.program = "/bin/sh";
    return *this;
}

void Program::start() { m_process = std::make_unique<Process>(m_start); }

Ended Program::wait()
{
    Ended ended;
    if (m_start.errors.empty())
        ended.errors = m_process->read_terminal();
    ended.code = m_process->wait();
    ended.output = read_text(m_start.output);
    if (!m_start.errors.empty())
        ended.errors = read_text(m_start.errors);
    return ended;
}

bool Program::left_nothing_temporary() const { return fs::is_empty(m_folder.path() / temporary_folder); }

Ended with_plain_lines(Ended ended)
{
    for (std::string* const text : {&ended.output, &ended.errors})
        for (std::size_t at = text->find("\r\n"); at != std::string::npos; at = text->find("\r\n", at))
            text->erase(at, 1);
    return ended;
}

} // namespace zvgentl::test
