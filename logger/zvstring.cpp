#include <cstring>
#include <string>

#include "zvlog/ZVSettings.h"

namespace {

// Without memory the text stays empty or as it was: nothing here may throw into the caller.
std::string copy_of(const char* text) noexcept
try {
    return text == nullptr ? std::string() : std::string(text);
} catch (...) {
    return {};
}

} // namespace

zvstring::zvstring() = default;

zvstring::zvstring(const char* text) : m_text(copy_of(text)) {}

zvstring::zvstring(const zvstring& other) : m_text(copy_of(other.c_str())) {}

zvstring::~zvstring() = default;

zvstring& zvstring::operator=(const zvstring& other)
{
    try {
        m_text = other.m_text;
    } catch (...) { // as with copy_of
    }
    return *this;
}

zvstring& zvstring::operator+=(const char* text)
{
    try {
        if (text != nullptr)
            m_text += text;
    } catch (...) { // as with copy_of
    }
    return *this;
}

const char* zvstring::c_str() const { return m_text.c_str(); }

zvstring operator+(const zvstring& left, const char* right)
{
    zvstring sum;
    try {
        sum.m_text.reserve(left.m_text.size() + (right == nullptr ? 0 : std::strlen(right)));
    } catch (...) { // as with copy_of
        return sum;
    }
    sum.m_text = left.m_text;
    sum += right;
    return sum;
}
