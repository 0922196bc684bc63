#include "simulator/faults/CallLog.h"

#include <utility>

namespace zvsim {

namespace {

constexpr size_t most_collected = size_t{8} << 20U; // an acquisition that never ends shall not eat all memory

} // namespace

CallLog::CallLog(const std::filesystem::path& path) : m_file{path, std::ios::binary | std::ios::trunc} {}

std::string CallLog::name_of(char kind, uint64_t handle)
{
    const auto known = m_names.find(handle);
    if (known != m_names.end())
        return known->second;
    std::string name = kind + std::to_string(++m_named[kind]);
    m_names.emplace(handle, name);
    return name;
}

void CallLog::add(uint32_t stream, const std::string& line)
{
    if (stream == 0) {
        m_file << ++m_lines << ' ' << line << '\n';
        return;
    }
    std::string& collected = m_collected[stream];
    collected += line + '\n';
    if (collected.size() > most_collected)
        release(stream);
}

void CallLog::release(uint32_t stream)
{
    const auto found = m_collected.find(stream);
    if (found == m_collected.end())
        return;
    m_file << found->second;
    m_collected.erase(found);
}

void CallLog::release_all()
{
    for (const auto& entry : std::exchange(m_collected, {}))
        m_file << entry.second;
}

} // namespace zvsim
