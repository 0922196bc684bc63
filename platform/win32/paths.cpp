#include "platform/paths.h"

#include <cctype>

#include <windows.h>

#include "platform/folders.h"
#include "platform/win32/wide.h"

namespace platform {

namespace {

bool is_slash(char letter) { return letter == '/' || letter == '\\'; }

bool is_folder(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

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

} // namespace platform
