#include "platform/DynamicLibrary.h"

#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "platform/library_file.h"

namespace platform {

namespace {

struct Phrase {
    const char* said;
    const char* before; // the words around what stands in front of the phrase, or behind it
    const char* after;
    bool is_behind;
};

// What the system says about libraries that the file needs.
constexpr Phrase phrases[] = {
    {": cannot open shared object file: No such file or directory", "the library ",
     ", which it needs, is missing", false},
    {": cannot open shared object file: Permission denied", "the library ",
     ", which it needs, may not be read", false},
    {": wrong ELF class", "the library ", ", which it needs, is for another processor", false},
    {": file too short", "", " is cut off", false},
    {"cannot dynamically load", "it is a program, not a library", "", true},
    {"undefined symbol: ", "none of the libraries that it needs has the function ", "", true},
    {"failed to map segment from shared object", "its folder does not allow programs to be executed", "",
     true},
};

/// The reason of the system without its own terms, and without the name of the file, which callers know.
std::string in_words(const std::string& reason, const std::string& file)
{
    for (const Phrase& phrase : phrases) {
        const std::size_t place = reason.find(phrase.said);
        if (place == std::string::npos)
            continue;
        std::string subject = phrase.is_behind ? reason.substr(place + std::string(phrase.said).size())
                                               : reason.substr(0, place);
        if (phrase.is_behind)
            subject = subject.substr(0, subject.find_first_of(": ,("));
        return phrase.before + (subject == file ? "it" : subject) + phrase.after;
    }
    const std::string start = file + ": ";
    return reason.compare(0, start.size(), start) == 0 ? reason.substr(start.size()) : reason;
}

} // namespace

const char* own_system() noexcept { return "Linux"; }

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file)
{
    if (is_cut_off(file))
        throw std::runtime_error("it is cut off");
    // An absolute path, because a bare name would be looked for in the system's library folders.
    const std::string path = std::filesystem::absolute(file).string();
    m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_library != nullptr)
        return;
    const std::string reason = dlerror(); // NOLINT(concurrency-mt-unsafe): the text is kept per thread
    const std::string problem = problem_of_library(file);
    throw std::runtime_error(problem.empty() ? in_words(reason, path) : problem);
}

DynamicLibrary::~DynamicLibrary() { dlclose(m_library); }

void* DynamicLibrary::find(const char* symbol) const noexcept { return dlsym(m_library, symbol); }

void* DynamicLibrary::find_in(const char* /*needed*/, const char* symbol) const noexcept
{
    return find(symbol); // which searches those that it needs as well
}

void* find_needed(const char* /*library*/, const char* symbol) noexcept
{
    return dlsym(RTLD_DEFAULT, symbol);
}

} // namespace platform
