#include "zvgentl/TextTable.h"

#include <algorithm>
#include <cstddef>

#include "platform/visible_text.h"

namespace zvgentl::tool {

std::string table_text(const std::vector<std::vector<std::string>>& rows, const std::string& indent)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], platform::visible(row[i]).size());
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line = indent;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string cell = platform::visible(row[i]);
            line += cell + std::string(widths[i] - cell.size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

} // namespace zvgentl::tool
