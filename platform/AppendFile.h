#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/FileStamp.h"

namespace platform {

/// Appends whole lines to a file that other processes append to and move away at the same time: every line
/// goes to the file that has the name at that moment, in one piece. Not for several threads at once.
class AppendFile {
public:
    /// Where to look for what may have given the name to another file.
    enum class Look {
        everywhere,
        /// In the folder of the file, and at whether that folder has moved. Takes less time where the system
        /// keeps exact stamps of folders.
        in_folder
    };
    /// Moves the file out of the way, for example by renaming it.
    using MoveAway = std::function<void()>;

    explicit AppendFile(std::string path) : m_path{std::move(path)} {}
    ~AppendFile() { close(); }
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    /// Opens the file that has the name now, and makes it if there is none. False when that fails.
    bool open(Look look = Look::everywhere);
    /// The size of the open file, or 0. What others append may be missing from it until the sixteenth call of
    /// `open` that has only looked in the folder.
    std::uint64_t size() const { return m_size; }
    /// Runs `move_away`, unless another process does so first, and opens the new file.
    bool replace(const MoveAway& move_away);
    /// Appends to the open file. False when not all of it was written.
    bool append(std::string_view text);

private:
    bool has_kept_the_name();
    bool has_the_name();
    void open_folder();
    bool is_in_folder() const;
    void close();

    std::string m_path;
    std::intptr_t m_handle{-1};
    /// Of the open file: which one it is does not change while it is open.
    std::uint64_t m_device{0};
    std::uint64_t m_node{0};
    std::uint64_t m_size{0};
    std::intptr_t m_folder{-1}; // unless its stamps are exact
    bool m_folder_was_tried{false};
    /// What the folder looks like for as long as the open file has the name; of state missing if that is not
    /// known.
    FileStamp m_folder_stamp;
    unsigned m_looks_in_folder{0};
};

} // namespace platform
