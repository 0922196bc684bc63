#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <mutex>
#include <string>

#include <Poco/Channel.h>

#include "logger/LinePrefix.h"
#include "platform/AppendFile.h"

namespace zvlog {

/// How far a file grows, and what happens then.
struct FilePolicy {
    std::string path;
    /// The path of the n-th archive, the newest is 0.
    std::function<std::string(unsigned)> archive;
    /// The size in bytes at which it is archived; 0: it grows for ever.
    std::uint64_t limit{0};
    /// How many are kept; 0: all.
    unsigned archives{0};
    /// Start with a new file.
    bool archive_first{false};
    /// Make the folder when it is missing.
    bool make_folder{false};
    /// Begin each line with time, process and priority.
    bool prefix_lines{false};
};

/// The path followed by ".0", ".1" and so on.
std::function<std::string(unsigned)> numbered_archives(const std::string& path);

/// Writes the text of each message as one line. Poco's own file channel fails when another process rotates
/// the same file at the same moment, which is usual for a log that all applications share.
/// Opens the file at the first line. `log` throws Poco's exceptions if it cannot write. For any thread.
class RotatingFileChannel final : public Poco::Channel {
public:
    explicit RotatingFileChannel(FilePolicy policy);
    void log(const Poco::Message& message) override;

private:
    void prepare(const Poco::Message& message);
    void archive();

    const FilePolicy m_policy;
    std::mutex m_mutex;
    platform::AppendFile m_file;
    LinePrefix m_prefix;
    std::string m_line; // kept for its memory
    bool m_started{false};
    std::time_t m_second{-1}; // of the last line
};

} // namespace zvlog
