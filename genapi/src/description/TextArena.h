#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace zvgenapi {

/// Keeps texts in few large blocks. The views that it hands out stay valid when it is moved.
class TextArena {
public:
    std::string_view keep(std::string_view text)
    {
        if (text.empty())
            return {};
        if (text.size() > m_left) {
            const std::size_t size = std::max(block_size, text.size());
            m_blocks.push_back(std::make_unique<char[]>(size));
            m_next = m_blocks.back().get();
            m_left = size;
        }
        std::memcpy(m_next, text.data(), text.size());
        const std::string_view kept(m_next, text.size());
        m_next += text.size();
        m_left -= text.size();
        return kept;
    }

private:
    static constexpr std::size_t block_size = std::size_t{256} << 10U;

    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_next{nullptr};
    std::size_t m_left{0};
};

} // namespace zvgenapi
