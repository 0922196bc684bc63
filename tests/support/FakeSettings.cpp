#include "support/FakeSettings.h"

#include <ostream>
#include <utility>

#include "zvlog/ZVSettings.h"

#include "support/AllocationFaults.h"

namespace zvtest {

bool SettingsRead::operator==(const SettingsRead& other) const
{
    return kind == other.kind && scope == other.scope && feature_type == other.feature_type &&
           key == other.key && default_value == other.default_value && flag == other.flag &&
           value_before == other.value_before && description == other.description;
}

std::ostream& operator<<(std::ostream& out, const SettingsRead& read)
{
    out << (read.kind == SettingsRead::Kind::get ? "Get" : "InitInteger") << "(scope " << read.scope
        << ", type " << read.feature_type << ", \"" << read.key << "\", value " << read.value_before
        << ", default " << read.default_value << ", flag " << read.flag << ", ";
    return out << (read.description ? '"' + *read.description + '"' : "null") << ')';
}

SettingsRead plain_read(const std::string& key, uint32_t default_value,
                        std::optional<std::string> description)
{
    SettingsRead read;
    read.key = key;
    read.default_value = default_value;
    read.description = std::move(description);
    return read;
}

SettingsRead override_read(const std::string& key)
{
    SettingsRead read;
    read.kind = SettingsRead::Kind::get;
    read.scope = 1;
    read.key = key + "-Overwrite";
    read.default_value = UINT32_MAX;
    read.flag = true;
    read.value_before = UINT32_MAX;
    return read;
}

FakeSettings& FakeSettings::instance()
{
    static FakeSettings* const settings = new FakeSettings; // never destroyed: read while statics die
    return *settings;
}

void FakeSettings::set(const std::string& key, uint32_t value)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_values[key] = value;
}

void FakeSettings::remove(const std::string& key)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_values.erase(key);
}

std::optional<uint32_t> FakeSettings::stored(const std::string& key) const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::nullopt : std::optional<uint32_t>(found->second);
}

std::optional<std::string> FakeSettings::description(const std::string& key) const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto found = m_descriptions.find(key);
    return found == m_descriptions.end() ? std::nullopt : std::optional<std::string>(found->second);
}

size_t FakeSettings::stored_count() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_values.size();
}

std::vector<SettingsRead> FakeSettings::reads() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_reads;
}

void FakeSettings::clear_reads()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_reads.clear();
}

void FakeSettings::get_writes_nothing()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_get_writes = false;
}

void FakeSettings::reset()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_values.clear();
    m_descriptions.clear();
    m_reads.clear();
    m_get_writes = true;
}

uint32_t FakeSettings::init_integer(const SettingsRead& read)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_reads.push_back(read);
    const auto [entry, created] = m_values.emplace(read.key, read.default_value);
    if (created && read.description)
        m_descriptions[read.key] = *read.description;
    return entry->second;
}

bool FakeSettings::get(const SettingsRead& read, uint32_t& value)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_reads.push_back(read);
    const auto found = m_values.find(read.key);
    if (m_get_writes)
        value = found == m_values.end() ? read.default_value : found->second;
    return found != m_values.end();
}

} // namespace zvtest

namespace {

std::optional<std::string> text_or_nothing(const char* text)
{
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

} // namespace

uint32_t ZVSettings::InitInteger(uint32_t feature_type, const char* key, uint32_t default_value,
                                 const char* description)
{
    const zvtest::PausedAllocationFaults pause;
    zvtest::SettingsRead read = zvtest::plain_read(key, default_value, text_or_nothing(description));
    read.feature_type = feature_type;
    return zvtest::FakeSettings::instance().init_integer(read);
}

bool ZVSettings::Get(uint32_t scope, uint32_t feature_type, const zvstring& key, uint32_t& value,
                     uint32_t default_value, bool flag, const char* description)
{
    const zvtest::PausedAllocationFaults pause;
    zvtest::SettingsRead read;
    read.kind = zvtest::SettingsRead::Kind::get;
    read.scope = scope;
    read.feature_type = feature_type;
    read.key = key.c_str();
    read.default_value = default_value;
    read.flag = flag;
    read.value_before = value;
    read.description = text_or_nothing(description);
    return zvtest::FakeSettings::instance().get(read, value);
}

zvstring::zvstring() = default;
zvstring::zvstring(const char* text) : m_text(text == nullptr ? "" : text) {}
zvstring::zvstring(const zvstring& other) = default;
zvstring::~zvstring() = default;
zvstring& zvstring::operator=(const zvstring& other) = default;

zvstring& zvstring::operator+=(const char* text)
{
    m_text += text == nullptr ? "" : text;
    return *this;
}

const char* zvstring::c_str() const { return m_text.c_str(); }

zvstring operator+(const zvstring& left, const char* right)
{
    zvstring sum(left);
    sum += right;
    return sum;
}
