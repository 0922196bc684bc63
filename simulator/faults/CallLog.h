#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "simulator/faults/Call.h"

namespace zvsim {

/// Writes what was called, in order, as text that is the same in every run that makes the same calls: handles
/// are numbered in the order in which they appear, and neither addresses nor times are written.
///
/// What happens on the thread of a stream (its frames, its faults, and calls from inside its callbacks)
/// happens alongside the other calls, in an order that differs from run to run. It is collected for each
/// stream, and written when another thread starts or ends something that the stream belongs to. Guarded by
/// the library's lock.
class CallLog {
public:
    /// A file that cannot be written gives a log without effect; see is_open().
    explicit CallLog(const std::filesystem::path& path);

    bool is_open() const { return m_file.is_open(); }

    /// A name that the handle keeps: its kind ('g' grabber, 'c' camera, 's' stream, 'b' buffer) and number.
    std::string name_of(char kind, uint64_t handle);

    /// Adds a line. `stream` is the stream whose thread this is, 0: of any other thread.
    void add(uint32_t stream, const std::string& line);
    /// Writes what has been collected for a stream.
    void release(uint32_t stream);
    void release_all();
    void flush() { m_file.flush(); }

private:
    std::ofstream m_file;
    uint64_t m_lines{0};
    std::map<uint64_t, std::string> m_names;
    std::map<char, uint64_t> m_named;
    std::map<uint32_t, std::string> m_collected;
};

} // namespace zvsim
