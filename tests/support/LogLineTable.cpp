#include "support/LogLineTable.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace zvtest {

namespace {

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

Priority priority_named(const std::string& name)
{
    for (int number = 1; number <= 8; ++number) {
        if (name == name_of(static_cast<Priority>(number)))
            return static_cast<Priority>(number);
    }
    throw std::runtime_error("log_lines.tsv: no priority is named " + name);
}

} // namespace

LogLineTable& LogLineTable::instance()
{
    // Never destroyed: lines may come until the process ends.
    static LogLineTable* const table = [] {
        auto* const made = new LogLineTable(ZV_LOG_LINES);
        std::atexit([] { instance().write_captured(); });
        return made;
    }();
    return *table;
}

LogLineTable::LogLineTable(const std::string& path)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        const std::vector<std::string> fields = split(line, '\t');
        if (fields.size() != 5 && fields.size() != 6)
            throw std::runtime_error("log_lines.tsv: neither five nor six fields: " + line);
        LogLineRow row{fields[2], {}, fields[4], fields.size() == 6};
        for (const std::string& name : split(fields[3], '|'))
            row.priorities.push_back(priority_named(name));
        m_loggers.insert(fields[0]);
        if (!m_rows.emplace(Site{fields[0], std::stoi(fields[1])}, row).second)
            throw std::runtime_error("log_lines.tsv: a call site has two rows: " + line);
    }
}

std::string LogLineTable::objection_to(const LogLine& line) const
{
    if (m_loggers.count(line.logger) == 0)
        return "";
    const auto found = m_rows.find({line.logger, line.number});
    if (found == m_rows.end())
        return "has no row in log_lines.tsv (tests/checks/log_lines.py --write adds one)";
    const LogLineRow& row = found->second;
    if (row.is_unreachable)
        return "is marked as unreachable in log_lines.tsv";
    if (row.function != "*" && row.function != line.function)
        return "names another function than its row: " + row.function;
    if (std::find(row.priorities.begin(), row.priorities.end(), line.priority) == row.priorities.end())
        return "has another priority than its row";
    if (!matches_format(row.pattern, line.message))
        return "does not read like its row: " + row.pattern;
    return "";
}

void LogLineTable::note(const LogLine& line)
{
    if (m_loggers.count(line.logger) == 0)
        return;
    const std::lock_guard<std::mutex> guard(m_lock);
    m_seen.emplace(line.logger, line.number);
}

void LogLineTable::write_captured() const
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): at the end of the process nothing changes the environment
    const char* const folder = std::getenv("ZV_LOG_CAPTURE_DIR");
    if (folder == nullptr)
        return;
    // A name of its own for each of the processes that end at the same time.
    std::random_device random;
    const std::string name = std::to_string(random()) + "-" + std::to_string(random()) + ".txt";
    const std::lock_guard<std::mutex> guard(m_lock);
    std::ofstream file(std::string(folder) + "/" + name);
    for (const Site& site : m_seen)
        file << site.first << '\t' << site.second << '\n';
}

} // namespace zvtest
