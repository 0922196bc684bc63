#include "support/process/process_state.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <malloc.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zvtest {

namespace fs = std::filesystem;

bool is_mapped(const std::string& file_name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const size_t path = line.find('/');
        if (path != std::string::npos && fs::path(line.substr(path)).filename() == file_name)
            return true;
    }
    return false;
}

std::set<std::string> open_descriptors()
{
    std::set<std::string> descriptors;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the one that reads the folder, for instance
        const fs::path target = fs::read_symlink(entry.path(), gone);
        if (target.string().find("/proc/") != 0)
            descriptors.insert(entry.path().filename().string() + " -> " + target.string());
    }
    return descriptors;
}

size_t thread_count()
{
    const fs::directory_iterator threads("/proc/self/task");
    return static_cast<size_t>(std::distance(threads, fs::directory_iterator()));
}

pid_t this_thread() { return static_cast<pid_t>(syscall(SYS_gettid)); }

bool is_asleep(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t name_end = line.rfind(')'); // the state follows the name, which may hold anything
    return name_end != std::string::npos && line.compare(name_end, 3, ") S") == 0;
}

void hold_libraries_of_others(const std::filesystem::path& /*producer*/) {}

size_t heap_in_use()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd; // blocks of the arenas, and those that are mapped one by one
}

MemorySize memory_size()
{
    std::ifstream statm("/proc/self/statm");
    MemorySize pages{};
    statm >> pages.virtual_space >> pages.resident;
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return {pages.resident * page, pages.virtual_space * page};
}

} // namespace zvtest
