#include "platform/files.h"

#include <array>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <tuple>
#include <vector>

#include "platform/leftovers.h"
#include "platform/win32/OpenFile.h"
#include "platform/win32/file_stamp.h"
#include "platform/win32/wide.h"

namespace platform {

namespace {

constexpr std::uint64_t largest_file = std::uint64_t{64} * 1024 * 1024;

// A file that somebody reads or scans at that moment cannot be replaced: worth another try, for half a
// second.
constexpr int most_tries = 100;
constexpr DWORD milliseconds_between_tries = 5;

bool is_passing(DWORD error) { return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED; }

bool read_all(HANDLE file, std::string& text)
{
    std::array<char, 16384> block;
    for (;;) {
        DWORD count = 0;
        if (ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &count, nullptr) == 0)
            return false;
        if (count == 0)
            return true;
        text.append(block.data(), count);
    }
}

bool write_all(HANDLE file, const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        DWORD count = 0;
        const auto rest = static_cast<DWORD>(text.size() - written); // no such file is larger
        if (WriteFile(file, text.data() + written, rest, &count, nullptr) == 0)
            return false;
        written += count;
    }
    return true;
}

// Rights that somebody restricted stay so; a file without rights of its own has those of its folder anyway.
void keep_permissions(const std::string& name, const std::string& path)
{
    DWORD size = 0;
    std::ignore = GetFileSecurityW(wide(path).c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<unsigned char> rights(size);
    if (size != 0 &&
        GetFileSecurityW(wide(path).c_str(), DACL_SECURITY_INFORMATION, rights.data(), size, &size) != 0)
        std::ignore = SetFileSecurityW(wide(name).c_str(), DACL_SECURITY_INFORMATION, rights.data());
}

bool write_new_file(const std::string& name, const std::string& text, Flush flush)
{
    const OpenFile file(name, GENERIC_WRITE, CREATE_NEW);
    return file.is_open() && write_all(file.handle(), text) &&
           (flush == Flush::later || FlushFileBuffers(file.handle()) != 0);
}

bool is_as_seen(const FileContent& file, const FileContent& seen)
{
    return file.state == seen.state && file.stamp.device == seen.stamp.device &&
           file.stamp.node == seen.stamp.node && file.text == seen.text;
}

// The system can only replace: between the look and the replacement an edit of somebody without the lock can
// get lost.
Replacement swap_in(const std::string& name, const std::string& path, const FileContent& seen, Flush flush)
{
    const bool is_new = seen.state == FileState::missing;
    const DWORD how =
        (flush == Flush::later ? 0 : MOVEFILE_WRITE_THROUGH) | (is_new ? 0 : MOVEFILE_REPLACE_EXISTING);
    for (int attempt = 0;; ++attempt) {
        if (!is_as_seen(read_file(path), seen))
            return Replacement::outdated;
        if (MoveFileExW(wide(name).c_str(), wide(path).c_str(), how) != 0)
            return Replacement::done;
        const DWORD error = GetLastError();
        if (is_new && (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS))
            return Replacement::outdated;
        if (!is_passing(error) || attempt == most_tries) {
            SetLastError(error);
            return Replacement::failed;
        }
        Sleep(milliseconds_between_tries);
    }
}

} // namespace

FileContent read_file(const std::string& path)
{
    FileContent content;
    // With the flag, folders open as well, so that they are not mistaken for files that may not be read.
    const OpenFile file(path, GENERIC_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    const DWORD error = file.is_open() ? 0 : GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
        return content;
    content.state = FileState::unreadable;
    if (!file.is_open()) {
        content.reason = describe_error(error);
        return content;
    }
    const std::int64_t now = stamp_clock();
    content.stamp = stamp_from(file.handle());
    const FileIdentity identity = identity_of(file.handle());
    if (content.stamp.state != FileState::present || GetFileType(file.handle()) != FILE_TYPE_DISK ||
        (identity.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        content.reason = "not a regular file";
        return content;
    }
    if (identity.size > largest_file) {
        content.reason = "file too large";
        return content;
    }
    if (!read_all(file.handle(), content.text)) {
        content.reason = describe_error(GetLastError());
        return content;
    }
    content.state = FileState::present;
    content.is_settled = is_settled(content.stamp, now) && has_own_stamps(file.handle());
    return content;
}

Replacement replace_file(const std::string& path, const FileContent& seen, const std::string& text,
                         Flush flush, std::string& reason)
{
    const std::string name = working_name(path + ".", ".new");
    const bool written = write_new_file(name, text, flush);
    if (written && seen.state == FileState::present)
        keep_permissions(name, path);
    const Replacement outcome = written ? swap_in(name, path, seen, flush) : Replacement::failed;
    if (outcome == Replacement::failed)
        reason = describe_error(GetLastError());
    if (outcome != Replacement::done)
        std::ignore = DeleteFileW(wide(name).c_str()); // a leftover harms nobody
    return outcome;
}

std::string resolve_links(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(wide(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    const OpenFile file(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING);
    std::wstring target(32768, L'\0');
    const DWORD length = file.is_open() ? GetFinalPathNameByHandleW(file.handle(), target.data(),
                                                                    static_cast<DWORD>(target.size()), 0)
                                        : 0;
    if (length == 0 || length >= target.size())
        return path;
    target.resize(length);
    return narrow(target);
}

void rename_file(const std::string& from, const std::string& to)
{
    // What cannot be moved stays, and grows.
    std::ignore = MoveFileExW(wide(from).c_str(), wide(to).c_str(), MOVEFILE_REPLACE_EXISTING);
}

bool exists(const std::string& path)
{
    return GetFileAttributesW(wide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A file has the rights of its folder: those of private folders are the user's alone.
std::FILE* create_file(const std::filesystem::path& file, Readers /*readers*/)
{
    const int descriptor =
        _wopen(file.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    if (descriptor == -1)
        return nullptr;
    std::FILE* const stream = _fdopen(descriptor, "w+b");
    if (stream == nullptr)
        _close(descriptor);
    return stream;
}

bool seek(std::FILE* file, std::int64_t offset, int origin) noexcept
{
    return _fseeki64(file, offset, origin) == 0;
}

std::int64_t place_in(std::FILE* file) noexcept { return _ftelli64(file); }

std::FILE* open_file(const std::filesystem::path& file) { return _wfopen(file.c_str(), L"rb"); }

std::FILE* open_for_writing(const std::filesystem::path& file)
{
    const int number = _wopen(file.c_str(), _O_WRONLY | _O_BINARY | _O_NOINHERIT);
    return number == -1 ? nullptr : _fdopen(number, "wb");
}

} // namespace platform
