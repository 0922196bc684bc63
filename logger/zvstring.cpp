#include <string>

#include "zvlog/ZVSettings.h"

namespace {

// Without memory the text stays as it was: nothing here may throw into the caller.
void assign(std::string& target, const char* text) noexcept
{
    try {
        target = text == nullptr ? "" : text;
    } catch (...) {
    }
}

} // namespace

zvstring::zvstring() = default;

zvstring::zvstring(const char* text) { assign(m_text, text); }

zvstring::zvstring(const zvstring& other) { assign(m_text, other.c_str()); }

zvstring::~zvstring() = default;

zvstring& zvstring::operator=(const zvstring& other)
{
    if (this != &other)
        assign(m_text, other.c_str());
    return *this;
}

zvstring& zvstring::operator+=(const char* text)
{
    try {
        if (text != nullptr)
            m_text += text;
    } catch (...) { // as with assign
    }
    return *this;
}

const char* zvstring::c_str() const { return m_text.c_str(); }

zvstring operator+(const zvstring& left, const char* right)
{
    zvstring sum(left);
    sum += right;
    return sum;
}
