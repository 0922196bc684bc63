#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/LogLine.h"

// The checked-in table of every line that the producer writes (log_lines.tsv). Every line that a test
// captures is compared with it, and the call sites that were seen are noted for the check that none was
// missed.

namespace zvtest {

/// One row: a call site.
struct LogLineRow {
    std::string function; // "*" where a shared helper writes for its caller
    std::vector<Priority> priorities;
    std::string pattern;
    bool is_unreachable{false};
};

class LogLineTable {
public:
    /// The table of this source tree.
    static LogLineTable& instance();
    /// Reads rows of tab-separated fields: logger, number, function, priorities joined by '|', pattern; and,
    /// for a line that cannot be reached, the reason.
    explicit LogLineTable(const std::string& path);

    /// What is wrong with the line, or an empty text. Lines of loggers without any row are not the
    /// table's business.
    std::string objection_to(const LogLine& line) const;
    /// Notes the line's call site; at the end of the process the set is written to a file in the folder named
    /// by ZV_LOG_CAPTURE_DIR, if it is set.
    void note(const LogLine& line);

private:
    using Site = std::pair<std::string, int>;
    void write_captured() const;

    std::map<Site, LogLineRow> m_rows;
    std::set<std::string> m_loggers;
    mutable std::mutex m_lock; // guards m_seen
    std::set<Site> m_seen;
};

} // namespace zvtest
