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
    /// The size that the file had when it was opened or last found under its name; 0 when it is not open.
    std::uint64_t size() const { return m_size; }
    /// Runs `move_away`, unless another process does so first, and opens the new file.
    bool replace(const MoveAway& move_away);
    /// Appends to the open file. False when not all of it was written.
    bool append(std::string_view text);

private:
    bool has_the_name();
    void close();

    std::string m_path;
    std::intptr_t m_handle{-1};
    /// Of the open file: which one it is does not change while it is open.
    std::uint64_t m_device{0};
    std::uint64_t m_node{0};
    std::uint64_t m_size{0};
};

} // namespace platform
