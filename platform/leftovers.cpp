#include "platform/leftovers.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <random>
#include <system_error>
#include <vector>

#include "platform/process.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

/// The process that a working name belongs to.
std::optional<std::uint32_t> owner_of(std::string_view name, std::string_view prefix, std::string_view suffix)
{
    if (name.size() < prefix.size() + suffix.size() || name.substr(0, prefix.size()) != prefix ||
        name.substr(name.size() - suffix.size()) != suffix)
        return std::nullopt;
    const std::string_view rest = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
    std::uint32_t process = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), process);
    // What follows the number keeps files away that somebody has numbered himself.
    if (error != std::errc() || end == rest.data() + rest.size() || (*end != '-' && *end != '.'))
        return std::nullopt;
    return process;
}

} // namespace

std::string working_name(const std::string& prefix, const std::string& suffix)
{
    std::random_device random;
    std::string name = prefix + std::to_string(process_id()) + "-";
    for (int digit = 0; digit < 16; ++digit)
        name += "0123456789abcdef"[random() & 0xFU];
    return name + suffix;
}

void remove_leftovers(const fs::path& folder, std::string_view prefix, std::string_view suffix) noexcept
try {
    std::vector<fs::path> leftovers;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const auto owner = owner_of(entry.path().filename().u8string(), prefix, suffix);
        if (owner && !is_running(*owner))
            leftovers.push_back(entry.path());
    }
    for (const auto& leftover : leftovers) {
        std::error_code ignored; // follows no links
        fs::remove_all(leftover, ignored);
    }
} catch (...) { // a folder that cannot be read has no leftovers that could be removed
    return;
}

} // namespace platform
