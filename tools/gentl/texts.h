#pragma once

#include <cctype>
#include <string>
#include <vector>

namespace zvgentl::tool {

inline std::string joined(const std::vector<std::string>& words, const char* separator)
{
    std::string text;
    const char* before = "";
    for (const auto& word : words) {
        text += before + word;
        before = separator;
    }
    return text;
}

inline std::string lower_case(std::string text)
{
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

inline bool ends_in(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

} // namespace zvgentl::tool
