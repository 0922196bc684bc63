#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/FileStamp.h"

// Whole files: reading one, and replacing one so that nobody ever sees half of it. Paths that are texts are
// UTF-8.

namespace platform {

/// A file as it was when it was read.
struct FileContent {
    FileState state{FileState::missing};
    std::string text;
    /// Why it is unreadable.
    std::string reason;
    /// Taken before the text was read; only of a file that is present.
    FileStamp stamp;
    /// Whether every change that is not in the text yet is certain to change the stamp. Never for files on
    /// other machines: the system may hand out old stamps of those.
    bool is_settled{false};
};

/// Reads a regular file. Anything else under that name, or an unreasonably large file, is unreadable.
FileContent read_file(const std::string& path);

enum class Replacement {
    done,
    /// Somebody changed the file after `seen` was read; nothing of theirs was lost.
    outdated,
    failed
};

/// Whether a text is on the disk before it replaces another. If not, a failure of the power may leave an
/// empty file.
enum class Flush { first, later };

/// Puts `text` in place of the file that was read as `seen` (or makes it, when that is missing), all or
/// nothing. Permissions and owner stay; a new file is for its owner alone. Not for symbolic links: see
/// `resolve_links`.
Replacement replace_file(const std::string& path, const FileContent& seen, const std::string& text,
                         Flush flush, std::string& reason);

/// The file that a chain of symbolic links ends at, whether it exists or not.
std::string resolve_links(const std::string& path);

/// Renames a file over another; does nothing when there is no such file.
void rename_file(const std::string& from, const std::string& to);

/// True when there is something of that name.
bool exists(const std::string& path);

/// Who may read a new file: everybody whom the process' usual rights for files allow, or only this user.
enum class Readers { usual, owner };

/// Creates a file for reading and writing as it is. Null, with the reason in errno, when there is anything of
/// that name already, even a link to nowhere. The caller closes it.
std::FILE* create_file(const std::filesystem::path& file, Readers readers);

/// Moves to a place in a file, as std::fseek does, also beyond 2 GiB. False when that fails.
bool seek(std::FILE* file, std::int64_t offset, int origin) noexcept;
/// The place in a file; -1 when it has none.
std::int64_t place_in(std::FILE* file) noexcept;

/// Opens a file of any name for reading as it is, for libraries in C; null when it cannot be opened. The
/// caller closes it.
std::FILE* open_file(const std::filesystem::path& file);

/// Opens what is there for writing bytes; null, with errno, when the system refuses. The caller closes it.
std::FILE* open_for_writing(const std::filesystem::path& file);

} // namespace platform
