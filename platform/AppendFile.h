#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

/// Appends whole lines to a file that other processes append to and move away at the same time: every line
/// goes to the file that has the name at that moment, in one piece. Not for several threads at once.
class AppendFile {
public:
    /// Moves the file out of the way, for example by renaming it.
    using MoveAway = std::function<void()>;

    explicit AppendFile(std::string path) : m_path{std::move(path)} {}
    ~AppendFile() { close(); }
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    /// Opens the file that has the name now, and makes it if there is none. False when that fails.
    bool open();
    /// The size of the file; 0 when it is not open.
    std::uint64_t size() const;
    /// Runs `move_away`, unless another process does so first, and opens the new file.
    bool replace(const MoveAway& move_away);
    /// Appends to the open file. False when not all of it was written.
    bool append(std::string_view text);

private:
    bool has_the_name() const;
    void close();

    std::string m_path;
    std::intptr_t m_handle{-1};
};

} // namespace platform
