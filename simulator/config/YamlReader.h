#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/config/YamlDocument.h"

// Values of a configuration file, checked while they are read. Whatever is wrong is reported with its line
// and with what is allowed, and reading goes on, so that all mistakes of a file are reported at once.

namespace zvsim {

class YamlMap;

/// The keys that a kind of section may have. Defined once, as a constant: a test compares them with the
/// schema.
struct YamlKeys {
    /// "grabber", as in the message 'unknown grabber key'.
    const char* section;
    std::vector<std::string_view> keys;
};

/// Words and what they mean.
template <class Meaning>
using YamlChoices = std::vector<std::pair<std::string_view, Meaning>>;

/// One value, with the name that messages give it. A reading function answers nothing when the value is
/// wrong, after it has reported that.
class YamlValue {
public:
    YamlValue(const YamlNode& node, std::string name, YamlErrors& errors)
        : m_node{&node}, m_name{std::move(name)}, m_errors{&errors}
    {
    }

    int line() const { return m_node->line; }
    const std::string& name() const { return m_name; }
    bool is_scalar() const { return m_node->kind == YamlNode::Kind::scalar; }
    bool is_list() const { return m_node->kind == YamlNode::Kind::list; }
    bool is_map() const { return m_node->kind == YamlNode::Kind::map; }
    /// The text of a scalar exactly as in the file; empty for anything else.
    const std::string& raw() const { return m_node->text; }

    /// Printable ASCII, in quotes or not.
    std::optional<std::string> text(size_t longest, size_t shortest = 0) const;
    /// An absolute path, in bytes of any kind but line ends; `what` names in a message what it leads to. A
    /// relative one would depend on the working directory of whatever application loads the library.
    std::optional<std::filesystem::path> path(const char* what, size_t longest = 4000) const;
    /// Decimal, or hexadecimal with 0x.
    std::optional<int64_t> integer(int64_t least, int64_t most) const;
    /// A number with or without a fraction. `otherwise` names in a message what the caller accepts beside it.
    std::optional<double> number(double least, double most, const char* otherwise = "") const;
    /// true or false.
    std::optional<bool> flag() const;
    /// A number and a unit: "40 ns", "10 us", "1.5 ms", "2 s", "3 min".
    std::optional<std::chrono::nanoseconds> duration(std::chrono::nanoseconds least,
                                                     std::chrono::nanoseconds most) const;
    template <class Meaning>
    std::optional<Meaning> choice(const YamlChoices<Meaning>& choices) const
    {
        std::vector<std::string_view> words;
        for (const auto& [word, meaning] : choices) {
            if (is_scalar() && raw() == word)
                return meaning;
            words.push_back(word);
        }
        wrong_choice(words);
        return std::nullopt;
    }
    /// The values of a list; empty when it is none, or is too short or too long.
    std::vector<YamlValue> list(size_t most, size_t least = 0) const;
    /// The section; without keys when it is none.
    YamlMap map(const YamlKeys& keys) const;

    /// Reports that the value is wrong: `NAME is VALUE; allowed: ALLOWED`.
    void wrong(const std::string& allowed) const;
    /// Reports something else about the line of the value.
    void report(const std::string& wrong, const std::string& allowed = {}) const;

private:
    friend class YamlMap;

    void wrong_choice(const std::vector<std::string_view>& words) const;
    std::string shown() const;

    const YamlNode* m_node;
    std::string m_name;
    YamlErrors* m_errors;
};

/// A section. Keys that it may not have are reported at once, with the nearest one that it may. Reading a key
/// that is absent, or whose value is wrong, leaves the target alone and answers false.
class YamlMap {
public:
    YamlMap(const YamlValue& value, const YamlKeys& keys);

    const YamlValue& value() const { return m_value; }
    int line() const { return m_value.line(); }
    std::optional<YamlValue> find(std::string_view key) const;
    bool has(std::string_view key) const { return find(key).has_value(); }

    bool text(std::string_view key, std::string& target, size_t longest, size_t shortest = 0) const;
    bool flag(std::string_view key, bool& target) const;
    template <class Integer>
    bool integer(std::string_view key, Integer& target, int64_t least, int64_t most) const
    {
        return read(key, target, [=](const YamlValue& value) { return value.integer(least, most); });
    }
    bool number(std::string_view key, double& target, double least, double most) const;
    template <class Duration>
    bool duration(std::string_view key, Duration& target, std::chrono::nanoseconds least,
                  std::chrono::nanoseconds most) const
    {
        const auto found = find(key);
        const auto value = found ? found->duration(least, most) : std::nullopt;
        if (value)
            target = std::chrono::duration_cast<Duration>(*value);
        return value.has_value();
    }
    template <class Meaning>
    bool choice(std::string_view key, Meaning& target, const YamlChoices<Meaning>& choices) const
    {
        return read(key, target, [&](const YamlValue& value) { return value.choice(choices); });
    }
    /// Empty also when the key is absent.
    std::vector<YamlValue> list(std::string_view key, size_t most, size_t least = 0) const;

    void report(const std::string& wrong, const std::string& allowed = {}) const;

private:
    template <class Target, class Read>
    bool read(std::string_view key, Target& target, const Read& read_value) const
    {
        const auto found = find(key);
        const auto value = found ? read_value(*found) : decltype(read_value(*found)){};
        if (value)
            target = static_cast<Target>(*value);
        return value.has_value();
    }

    YamlValue m_value;
};

/// "a, b, c".
std::string joined(const std::vector<std::string_view>& words);

} // namespace zvsim
