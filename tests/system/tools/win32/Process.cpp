#include "system/tools/Process.h"

#include <array>
#include <cwchar>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include <windows.h>

namespace zvgentl::test {

namespace fs = std::filesystem;

const std::vector<Interruption> interruptions{{"CtrlC", CTRL_C_EVENT}, {"CtrlBreak", CTRL_BREAK_EVENT}};

Variables folders_of_user(const fs::path& home, const fs::path& temporary)
{
    return {{"APPDATA", (home / "Roaming").u8string()},
            {"LOCALAPPDATA", (home / "Local").u8string()},
            {"PROGRAMDATA", (home / "ProgramData").u8string()},
            {"TEMP", temporary.u8string()},
            {"TMP", temporary.u8string()}};
}

namespace {

struct IsBefore { // as the system compares the names of variables
    bool operator()(const std::wstring& left, const std::wstring& right) const
    {
        return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    }
};

std::wstring environment_block(const Variables& wanted)
{
    std::map<std::wstring, std::wstring, IsBefore> variables;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
        const std::wstring text = entry;
        const std::size_t end = text.find(L'=', 1); // the system's own names begin with the sign
        variables[text.substr(0, end)] = text.substr(end + 1);
    }
    FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : wanted)
        variables[fs::u8path(name).wstring()] = fs::u8path(value).wstring();

    std::wstring block;
    for (const auto& [name, value] : variables)
        if (!value.empty())
            block.append(name).append(L"=").append(value).push_back(L'\0');
    block.push_back(L'\0');
    return block;
}

/// As the run-time library of the program takes it apart again.
std::wstring quoted(const std::wstring& word)
{
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t letter : word) {
        if (letter == L'"')
            text.append(backslashes + 1, L'\\');
        backslashes = letter == L'\\' ? backslashes + 1 : 0;
        text += letter;
    }
    return text.append(backslashes, L'\\') + L"\"";
}

std::wstring command_line(const fs::path& program, const std::vector<std::string>& arguments)
{
    std::wstring line = quoted(program.wstring());
    for (const std::string& word : arguments)
        line += L" " + quoted(fs::u8path(word).wstring());
    return line;
}

/// Copies what a program writes into a file, until nobody is left who could write. The file itself is never
/// open in other programs, of which the system may start some for the console: it could not be removed then.
class Copy {
public:
    explicit Copy(const fs::path& file) : m_file(file, std::ios::binary)
    {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        if (CreatePipe(&m_end, &m_program_end, &inherited, 0) == 0)
            throw std::runtime_error("no pipe to be had");
        SetHandleInformation(m_end, HANDLE_FLAG_INHERIT, 0);
    }
    ~Copy()
    {
        begin();
        m_thread.join();
        CloseHandle(m_end);
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    HANDLE program_end() const { return m_program_end; }
    /// Once the program has its end.
    void begin()
    {
        if (m_thread.joinable())
            return;
        CloseHandle(m_program_end);
        m_thread = std::thread([this] { copy(); });
    }

private:
    void copy()
    {
        std::array<char, 4096> part{};
        for (DWORD count = 0; ReadFile(m_end, part.data(), part.size(), &count, nullptr) != 0;)
            m_file.write(part.data(), count);
    }

    std::ofstream m_file;
    HANDLE m_end{nullptr};
    HANDLE m_program_end{nullptr};
    std::thread m_thread;
};

PROCESS_INFORMATION run(const fs::path& program, std::wstring line, wchar_t* environment, DWORD flags,
                        STARTUPINFOW& startup)
{
    PROCESS_INFORMATION started{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                       flags | CREATE_UNICODE_ENVIRONMENT, environment, nullptr, &startup, &started) == 0)
        throw std::runtime_error("cannot start " + program.u8string());
    CloseHandle(started.hThread);
    return started;
}

int wait_for(HANDLE process)
{
    DWORD code = 0;
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    return static_cast<int>(code);
}

} // namespace

struct Process::Handles {
    explicit Handles(const Start& start)
        : output(std::in_place, start.output), errors(std::in_place, start.errors)
    {
    }

    HANDLE process{nullptr};
    DWORD number{0};
    std::optional<Copy> output;
    std::optional<Copy> errors;
};

Process::Process(const Start& start)
{
    if (start.errors.empty())
        throw std::runtime_error("no terminal to be had");
    m_handles = std::make_unique<Handles>(start);
    std::wstring environment = environment_block(start.variables);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = m_handles->output->program_end();
    startup.hStdError = m_handles->errors->program_end();
    SetConsoleCtrlHandler(nullptr, FALSE); // else the program might inherit that Ctrl-C is ignored
    // With a console of its own, without a window: keys that are pressed there reach this program alone.
    const PROCESS_INFORMATION started = run(start.program, command_line(start.program, start.arguments),
                                            environment.data(), CREATE_NO_WINDOW, startup);
    m_handles->process = started.hProcess;
    m_handles->number = started.dwProcessId;
    m_handles->output->begin();
    m_handles->errors->begin();
}

Process::~Process()
{
    if (m_handles->process != nullptr) {
        TerminateProcess(m_handles->process, 1);
        wait();
    }
}

void Process::interrupt(const Interruption& way) const
{
    // By a program that joins the console, because whoever joins another one loses their own.
    const fs::path program = ZV_PRESS_KEY;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    const std::vector<std::string> words{std::to_string(m_handles->number), std::to_string(way.number)};
    const auto started = run(program, command_line(program, words), nullptr, DETACHED_PROCESS, startup);
    if (wait_for(started.hProcess) != 0)
        throw std::runtime_error("cannot press keys at the program's console");
}

std::string Process::read_terminal() const { return {}; }

int Process::wait()
{
    m_handles->output.reset();
    m_handles->errors.reset();
    return wait_for(std::exchange(m_handles->process, nullptr));
}

} // namespace zvgentl::test
