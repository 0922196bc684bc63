#include "logger/RotatingFileChannel.h"

#include <tuple>
#include <utility>

#include <Poco/Exception.h>
#include <Poco/Message.h>

#include "platform/files.h"
#include "platform/paths.h"

namespace zvlog {

std::function<std::string(unsigned)> numbered_archives(const std::string& path)
{
    return [path](unsigned number) { return path + "." + std::to_string(number); };
}

RotatingFileChannel::RotatingFileChannel(FilePolicy policy)
    : m_policy(std::move(policy)), m_file(m_policy.path)
{
}

void RotatingFileChannel::log(const Poco::Message& message)
{
    const std::lock_guard lock(m_mutex);
    m_line.clear();
    if (m_policy.prefix_lines)
        m_prefix.append_to(m_line, message);
    m_line += message.getText();
    m_line += '\n';
    prepare(message);
    if (!m_file.append(m_line))
        throw Poco::WriteFileException(m_policy.path);
}

void RotatingFileChannel::prepare(const Poco::Message& message)
{
    using Look = platform::AppendFile::Look;
    const auto move_away = [this] { archive(); };
    const auto second = message.getTime().epochTime();
    bool is_open = m_file.open(second == m_second ? Look::in_folder : Look::everywhere);
    m_second = second;
    if (!is_open && m_policy.make_folder)
        is_open = platform::make_folders(platform::folder_of(m_policy.path)) && m_file.open();
    const bool is_due = m_policy.limit != 0 && m_file.size() >= m_policy.limit;
    const bool is_old = m_policy.archive_first && !m_started && m_file.size() > 0;
    if (is_open && (is_due || is_old))
        is_open = m_file.replace(move_away);
    if (!is_open)
        throw Poco::OpenFileException(m_policy.path);
    m_started = true;
}

void RotatingFileChannel::archive()
{
    unsigned last = 0;
    while (last + 1 != m_policy.archives && platform::exists(m_policy.archive(last)))
        ++last;
    for (; last > 0; --last)
        platform::rename_file(m_policy.archive(last - 1), m_policy.archive(last));
    platform::rename_file(m_policy.path, m_policy.archive(0));
}

} // namespace zvlog
