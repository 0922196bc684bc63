#include "platform/files.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <system_error>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/leftovers.h"
#include "platform/paths.h"
#include "platform/posix/file_stamp.h"

namespace platform {

namespace {

constexpr mode_t for_the_owner = 0600;
constexpr off_t largest_file = off_t{64} * 1024 * 1024;

std::string describe(int error) { return std::generic_category().message(error); }

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number != -1)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return m_number; }

private:
    int m_number;
};

bool read_all(int descriptor, std::string& text)
{
    std::array<char, 16384> block;
    for (;;) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count == 0)
            return true;
        if (count > 0)
            text.append(block.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
}

bool write_all(int descriptor, const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(descriptor, text.data() + written, text.size() - written);
        if (count >= 0)
            written += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

// The owner matters as well: root must not take a user's file away by editing it.
void keep_permissions(int descriptor, const std::string& path)
{
    struct stat old = {};
    if (stat(path.c_str(), &old) != 0)
        return;
    const bool same_owner = fchown(descriptor, old.st_uid, old.st_gid) == 0;
    const mode_t special = same_owner ? 0 : S_ISUID | S_ISGID;
    std::ignore = fchmod(descriptor, old.st_mode & 07777 & ~special); // else that of a new file
}

bool write_new_file(const std::string& name, const std::string& path, const FileContent& seen,
                    const std::string& text, Flush flush)
{
    const Descriptor file{open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, for_the_owner)};
    if (file.number() == -1 || fchmod(file.number(), for_the_owner) != 0) // whatever the process masks
        return false;
    if (seen.state == FileState::present)
        keep_permissions(file.number(), path);
    return write_all(file.number(), text) && (flush == Flush::later || fsync(file.number()) == 0);
}

bool is_as_seen(const FileContent& file, const FileContent& seen)
{
    return file.state == seen.state && file.stamp.device == seen.stamp.device &&
           file.stamp.node == seen.stamp.node && file.text == seen.text;
}

#if defined(RENAME_EXCHANGE)
int rename_with(unsigned flags, const std::string& from, const std::string& to)
{
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags);
}
#else
constexpr unsigned RENAME_EXCHANGE = 0;
constexpr unsigned RENAME_NOREPLACE = 0;
int rename_with(unsigned, const std::string&, const std::string&)
{
    errno = ENOSYS;
    return -1;
}
#endif

// For file systems that can only replace: between the look and the replacement an edit can get lost.
Replacement swap_in_plainly(const std::string& name, const std::string& path, const FileContent& seen)
{
    if (!is_as_seen(read_file(path), seen))
        return Replacement::outdated;
    return rename(name.c_str(), path.c_str()) == 0 ? Replacement::done : Replacement::failed;
}

Replacement swap_in(const std::string& name, const std::string& path, const FileContent& seen)
{
    const bool is_new = seen.state == FileState::missing;
    if (rename_with(is_new ? RENAME_NOREPLACE : RENAME_EXCHANGE, name, path) != 0) {
        if (errno == EINVAL || errno == ENOSYS)
            return swap_in_plainly(name, path, seen);
        return errno == (is_new ? EEXIST : ENOENT) ? Replacement::outdated : Replacement::failed;
    }
    // After an exchange the temporary name holds the replaced file, so an edit that came in between is not
    // lost.
    if (is_new || is_as_seen(read_file(name), seen))
        return Replacement::done;
    return rename(name.c_str(), path.c_str()) == 0 ? Replacement::outdated : Replacement::failed;
}

} // namespace

FileContent read_file(const std::string& path)
{
    FileContent content;
    // A pipe under that name must not block the reader.
    const Descriptor file{open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)};
    if (file.number() == -1 && (errno == ENOENT || errno == ENOTDIR))
        return content;
    content.state = FileState::unreadable;
    const std::int64_t now = stamp_clock();
    struct stat state = {};
    if (file.number() == -1 || fstat(file.number(), &state) != 0) {
        content.reason = describe(errno);
        return content;
    }
    if (!S_ISREG(state.st_mode) || state.st_size > largest_file) {
        content.reason = S_ISREG(state.st_mode) ? "file too large" : "not a regular file";
        return content;
    }
    if (!read_all(file.number(), content.text)) {
        content.reason = describe(errno);
        return content;
    }
    content.state = FileState::present;
    content.stamp = stamp_from(state);
    content.is_settled = is_settled(content.stamp, now) && has_own_stamps(file.number());
    return content;
}

Replacement replace_file(const std::string& path, const FileContent& seen, const std::string& text,
                         Flush flush, std::string& reason)
{
    const std::string name = working_name(path + ".", ".new");
    const bool written = write_new_file(name, path, seen, text, flush);
    const Replacement outcome = written ? swap_in(name, path, seen) : Replacement::failed;
    if (outcome == Replacement::failed)
        reason = describe(errno);
    unlink(name.c_str());
    return outcome;
}

std::string resolve_links(const std::string& path)
{
    std::string resolved = path;
    std::array<char, PATH_MAX> target;
    for (int hops = 0; hops < 40; ++hops) {
        const ssize_t length = readlink(resolved.c_str(), target.data(), target.size());
        if (length < 0)
            break;
        const std::string next(target.data(), static_cast<std::size_t>(length));
        resolved = is_absolute(next) ? next : folder_of(resolved).append("/").append(next);
    }
    return resolved;
}

void rename_file(const std::string& from, const std::string& to)
{
    std::ignore = rename(from.c_str(), to.c_str()); // what cannot be moved stays, and grows
}

bool exists(const std::string& path)
{
    struct stat state = {};
    return lstat(path.c_str(), &state) == 0;
}

std::FILE* create_file(const std::filesystem::path& file, Readers readers)
{
    const bool is_private = readers == Readers::owner;
    const int descriptor =
        open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, is_private ? for_the_owner : mode_t{0666});
    if (descriptor == -1)
        return nullptr;
    std::FILE* const stream =
        is_private && fchmod(descriptor, for_the_owner) != 0 ? nullptr : fdopen(descriptor, "w+b");
    if (stream == nullptr)
        ::close(descriptor);
    return stream;
}

bool seek(std::FILE* file, std::int64_t offset, int origin) noexcept
{
    return fseeko(file, offset, origin) == 0;
}

std::int64_t place_in(std::FILE* file) noexcept { return ftello(file); }

std::FILE* open_file(const std::filesystem::path& file) { return std::fopen(file.c_str(), "rb"); }

std::FILE* open_for_writing(const std::filesystem::path& file)
{
    const int number = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    return number == -1 ? nullptr : fdopen(number, "w");
}

} // namespace platform
