#include "platform/Platform.h"

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <windows.h> // before the headers that need it

#include <fcntl.h>
#include <io.h>
#include <sddl.h>

namespace zvgentl::tool {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(DWORD number, const std::string& what)
{
    throw std::system_error(static_cast<int>(number), std::system_category(), what);
}

/// Paths convert between the system's letters and the tools' UTF-8.
std::wstring wide(const std::string& text) { return fs::u8path(text).wstring(); }
std::string narrow(const std::wstring& text) { return fs::path(text).u8string(); }

std::wstring file_of_program()
{
    std::wstring name(32768, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

fs::path folder_named_by(const char* variable)
{
    const fs::path base = fs::u8path(environment(variable));
    return base.is_absolute() ? base / "zvgentl" : fs::path();
}

struct FreeLocal {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};

/// The number of the user that this process runs for, as rights are written with.
std::string number_of_user()
{
    alignas(TOKEN_USER) std::array<unsigned char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user{};
    DWORD size = 0;
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0)
        fail(GetLastError(), "cannot tell who the user is");
    const BOOL known = GetTokenInformation(token, TokenUser, user.data(), user.size(), &size);
    CloseHandle(token);
    char* text = nullptr;
    if (known == 0 ||
        ConvertSidToStringSidA(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text) == 0)
        fail(GetLastError(), "cannot tell who the user is");
    return std::unique_ptr<char, FreeLocal>(text).get();
}

/// Rights for the user alone, passed on to what is created inside.
class PrivateRights {
public:
    PrivateRights()
    {
        const std::string rights = "D:P(A;OICI;FA;;;" + number_of_user() + ")";
        if (ConvertStringSecurityDescriptorToSecurityDescriptorA(
                rights.c_str(), SDDL_REVISION_1, &m_attributes.lpSecurityDescriptor, nullptr) == 0)
            fail(GetLastError(), "cannot describe the rights of a private folder");
    }
    ~PrivateRights() { LocalFree(m_attributes.lpSecurityDescriptor); }
    PrivateRights(const PrivateRights&) = delete;
    PrivateRights& operator=(const PrivateRights&) = delete;

    SECURITY_ATTRIBUTES* get() { return &m_attributes; }

private:
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

} // namespace

const char path_list_separator = ';';

DynamicLibrary::DynamicLibrary(const fs::path& file)
    // By its full path, and with its own folder searched for the libraries that it needs in turn.
    : m_library(
          LoadLibraryExW(fs::absolute(file).make_preferred().c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
{
    if (m_library == nullptr)
        throw std::runtime_error(
            std::system_category().message(static_cast<int>(GetLastError()))); // names no file: callers do
}

DynamicLibrary::~DynamicLibrary() { FreeLibrary(static_cast<HMODULE>(m_library)); }

void* DynamicLibrary::find(const char* symbol) const noexcept
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_library), symbol));
}

fs::path program_folder() { return fs::path(file_of_program()).parent_path(); }

fs::path user_configuration_folder() { return folder_named_by("APPDATA"); }

fs::path machine_configuration_folder()
{
    const fs::path folder = folder_named_by("ProgramData");
    return folder.empty() ? fs::path("C:/ProgramData/zvgentl") : folder;
}

std::string environment(const char* name)
{
    std::wstring value(32767, L'\0'); // the most that the system allows
    value.resize(
        GetEnvironmentVariableW(wide(name).c_str(), value.data(), static_cast<DWORD>(value.size() + 1)));
    return narrow(value);
}

void set_environment(const char* name, const std::string& value)
{
    // Through the run-time library, which keeps a copy of its own for getenv.
    if (_wputenv_s(wide(name).c_str(), wide(value).c_str()) != 0)
        throw std::runtime_error(std::string("cannot set the variable ") + name);
}

fs::path make_private_folder(const std::string& prefix)
{
    PrivateRights rights;
    const fs::path parent = fs::temp_directory_path();
    for (unsigned serial = 0;; ++serial) {
        const fs::path folder =
            parent / (prefix + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(serial));
        if (CreateDirectoryW(folder.c_str(), rights.get()) != 0)
            return folder;
        const DWORD error = GetLastError();
        if (error != ERROR_ALREADY_EXISTS)
            fail(error, "cannot create the folder " + folder.u8string());
    }
}

bool is_terminal(std::FILE* stream) noexcept
{
    // The run-time library takes the null device for a terminal as well, and consoles follow control
    // sequences only when they are asked to.
    auto* const console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void keep_bytes(std::FILE* stream) noexcept { _setmode(_fileno(stream), _O_BINARY); }

} // namespace zvgentl::tool
