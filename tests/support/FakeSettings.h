#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zvtest {

/// One call of the store with all its arguments. A null description is empty.
struct SettingsRead {
    enum class Kind { init_integer, get };
    Kind kind{Kind::init_integer};
    uint32_t scope{0}; // get only
    uint32_t feature_type{3};
    std::string key;
    uint32_t default_value{0};
    bool flag{false};         // get only
    uint32_t value_before{0}; // get only: what the out-parameter held
    std::optional<std::string> description;

    bool operator==(const SettingsRead& other) const;
    friend std::ostream& operator<<(std::ostream& out, const SettingsRead& read);
};

/// A plain read as the producer should make it.
SettingsRead plain_read(const std::string& key, uint32_t default_value,
                        std::optional<std::string> description = std::nullopt);
/// An override read as the producer should make it; `key` without "-Overwrite".
SettingsRead override_read(const std::string& key);

/// One per process. Thread-safe.
class FakeSettings {
public:
    static FakeSettings& instance();

    void set(const std::string& key, uint32_t value);
    /// Sets the key with "-Overwrite" appended.
    void set_override(const std::string& key, uint32_t value) { set(key + "-Overwrite", value); }
    void remove(const std::string& key);
    /// What is stored, also by creation through InitInteger.
    std::optional<uint32_t> stored(const std::string& key) const;
    std::optional<std::string> description(const std::string& key) const;
    size_t stored_count() const;

    std::vector<SettingsRead> reads() const;
    void clear_reads();
    /// From now on Get writes nothing to its out-parameter.
    void get_writes_nothing();
    /// Empties the store and the record.
    void reset();

    // For the functions of the library. Not for tests.
    uint32_t init_integer(const SettingsRead& read);
    bool get(const SettingsRead& read, uint32_t& value);

private:
    mutable std::mutex m_lock;
    std::map<std::string, uint32_t> m_values;
    std::map<std::string, std::string> m_descriptions;
    std::vector<SettingsRead> m_reads;
    bool m_get_writes{true};
};

} // namespace zvtest
