#include "unit/genapi/Mutator.h"

#include <algorithm>
#include <utility>

namespace zvgenapi {

namespace {

constexpr std::size_t most_changes = 4;
constexpr std::size_t longest_part = 200;

} // namespace

Mutator::Mutator(unsigned int seed, std::vector<std::string_view> pieces)
    : m_random(seed), m_pieces(std::move(pieces))
{
}

std::size_t Mutator::below(std::size_t limit)
{
    return m_random() % limit; // a distribution of the library would differ between systems
}

std::string Mutator::mutate(const std::string& text, const std::string& other)
{
    std::string changed = text;
    for (std::size_t i = below(most_changes) + 1; i > 0; --i)
        change(changed, other);
    return changed;
}

void Mutator::change(std::string& text, const std::string& other)
{
    const std::size_t place = below(text.size() + 1);
    const std::size_t length = below(std::min(text.size() - place, longest_part) + 1);
    switch (below(7)) {
    case 0: // another byte
        text.replace(place, std::min<std::size_t>(length, 1), 1, static_cast<char>(below(256)));
        break;
    case 1: // a byte with another bit
        if (place < text.size())
            text[place] = static_cast<char>(static_cast<unsigned char>(text[place]) ^ (1U << below(8)));
        break;
    case 2:
        text.insert(place, one_of(m_pieces));
        break;
    case 3: // a piece in place of a part
        text.replace(place, std::min<std::size_t>(length, 8), one_of(m_pieces));
        break;
    case 4:
        text.erase(place, length);
        break;
    case 5:
        text.insert(place, std::string(text, place, length));
        break;
    case 6: {
        const std::size_t start = below(other.size() + 1);
        text.replace(place, length, other, start, below(longest_part));
        break;
    }
    default:
        break;
    }
}

} // namespace zvgenapi
