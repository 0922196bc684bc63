#include "platform/paths.h"

#include <array>
#include <cctype>
#include <memory>
#include <system_error>

#include <windows.h> // before the headers that need it

#include <sddl.h>

#include "platform/environment.h"
#include "platform/win32/wide.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

bool is_slash(char letter) { return letter == '/' || letter == '\\'; }

bool is_folder(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

[[noreturn]] void fail(DWORD number, const std::string& what)
{
    throw std::system_error(static_cast<int>(number), std::system_category(), what);
}

fs::path folder_in(const char* variable)
{
    const fs::path folder = fs::u8path(environment(variable));
    return folder.is_absolute() ? folder : fs::path();
}

fs::path product_folder(const char* variable)
{
    const fs::path base = folder_in(variable);
    return base.empty() ? fs::path() : base / "zvgentl";
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

// A drive and a slash, or a server; "C:file" and "/file" depend on the working folder and its drive.
bool is_absolute(const std::string& path)
{
    if (path.size() < 3)
        return false;
    const bool has_drive = std::isalpha(static_cast<unsigned char>(path[0])) != 0 && path[1] == ':';
    return (has_drive && is_slash(path[2])) || (is_slash(path[0]) && is_slash(path[1]));
}

std::string folder_of(const std::string& path)
{
    const std::size_t slash = path.find_last_of("/\\");
    if (slash == std::string::npos)
        return {};
    const bool is_root = slash == 2 && path[1] == ':';
    return path.substr(0, is_root ? slash + 1 : slash);
}

std::string expand_home(const std::string& path)
{
    if (path.compare(0, 2, "~/") != 0 && path.compare(0, 2, "~\\") != 0)
        return path;
    const std::string home = home_folder().u8string();
    return home.empty() ? std::string() : home + path.substr(1);
}

bool make_folders(const std::string& folder)
{
    if (folder.empty() || is_folder(folder))
        return !folder.empty();
    const std::string parent = folder_of(folder);
    if (parent == folder || !make_folders(parent))
        return false;
    return CreateDirectoryW(wide(folder).c_str(), nullptr) != 0 || is_folder(folder);
}

fs::path home_folder()
{
    const fs::path home = folder_in("USERPROFILE");
    std::error_code error; // a folder that cannot be looked at is none
    return fs::is_directory(home, error) ? home : fs::path();
}

fs::path user_configuration_folder() { return product_folder("APPDATA"); }

fs::path machine_configuration_folder()
{
    const fs::path folder = product_folder("ProgramData");
    return folder.empty() ? fs::path("C:/ProgramData/zvgentl") : folder;
}

std::vector<const char*> configuration_variables() { return {"APPDATA", "ProgramData"}; }

fs::path user_state_folder() { return product_folder("LOCALAPPDATA"); }

fs::path program_folder()
{
    std::wstring name(32768, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return fs::path(name).parent_path();
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

} // namespace platform
