#include <array>
#include <stdexcept>

#include <sys/inotify.h>
#include <unistd.h>

#include "system/tools/Process.h"

namespace zvgentl::test {

struct FileWatch::Handles {
    int descriptor{-1};
};

FileWatch::FileWatch(const std::filesystem::path& folder) : m_handles(std::make_unique<Handles>())
{
    m_handles->descriptor = inotify_init1(IN_CLOEXEC);
    if (inotify_add_watch(m_handles->descriptor, folder.c_str(), IN_MOVED_TO) < 0)
        throw std::runtime_error("cannot watch " + folder.string());
}

FileWatch::~FileWatch() { close(m_handles->descriptor); }

void FileWatch::wait_for(const std::string& name) const
{
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t size = read(m_handles->descriptor, buffer.data(), buffer.size());
        for (ssize_t at = 0; at < size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            if (name == event->name)
                return;
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
}

} // namespace zvgentl::test
