#include "platform/win32/wide.h"

#include <system_error>

#include <windows.h>

namespace platform {

std::wstring wide(const std::string& text)
{
    const int length = static_cast<int>(text.size());
    std::wstring result(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), static_cast<int>(result.size()));
    return result;
}

std::string narrow(const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    const int wanted = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(wanted), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), wanted, nullptr, nullptr);
    return result;
}

std::string describe_error(uint32_t number)
{
    std::string text = std::system_category().message(static_cast<int>(number));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    return text;
}

} // namespace platform
