#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "hostile/input.h"

// Gives a target every file of a corpus, and then inputs that are made of these files by a fixed series of
// changes: the same ones in every run. With a third argument each input is kept in that file before it is
// tried, so that the one that leads to a crash is still there afterwards.
//
//     hostile_NAME CORPUS-FOLDER COUNT [FILE-OF-THE-INPUT]

namespace {

namespace fs = std::filesystem;

constexpr std::size_t largest_input = 65536;

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) { return limit == 0 ? 0 : random() % limit; }

std::string content_of(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> read_corpus(const fs::path& folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end()); // folders have no order
    std::vector<std::string> inputs;
    for (const auto& file : files)
        inputs.push_back(content_of(file));
    return inputs;
}

/// Bytes and numbers at which programs tend to go wrong.
std::string awkward_bytes(Random& random)
{
    static const std::vector<std::string> all{std::string(1, '\0'),
                                              std::string(4, '\0'),
                                              "\xFF",
                                              "\xFF\xFF\xFF\xFF",
                                              "\x7F\xFF\xFF\xFF",
                                              "\x80",
                                              "\n",
                                              "\r\n",
                                              "${",
                                              "}",
                                              "&a",
                                              "*a",
                                              "- ",
                                              ": ",
                                              "{",
                                              "[",
                                              "\"",
                                              "4294967296",
                                              "-1",
                                              "0x",
                                              "1e999",
                                              "\xC2\x9B",
                                              "%n",
                                              "\x1B"};
    return all[below(random, all.size())];
}

void change_once(std::string& input, const std::vector<std::string>& corpus, Random& random)
{
    const std::size_t place = below(random, input.size() + 1);
    const std::size_t length = below(random, std::min<std::size_t>(input.size() - place, 64) + 1);
    switch (below(random, 8)) {
    case 0: // one bit
        if (place < input.size())
            input[place] =
                static_cast<char>(static_cast<unsigned char>(input[place]) ^ (1U << below(random, 8)));
        break;
    case 1: // one byte
        if (place < input.size())
            input[place] = static_cast<char>(random());
        break;
    case 2:
        input.erase(place, length);
        break;
    case 3:
        input.insert(place, awkward_bytes(random));
        break;
    case 4: { // something awkward in place of something else
        const std::string bytes = awkward_bytes(random);
        input.replace(place, std::min(bytes.size(), input.size() - place), bytes);
        break;
    }
    case 5: { // a part of it, several times
        const std::string part = input.substr(place, length);
        for (std::size_t time = below(random, 20); time > 0; --time)
            input.insert(place, part);
        break;
    }
    case 6: { // the end of another one
        const std::string& other = corpus[below(random, corpus.size())];
        input = input.substr(0, place) + other.substr(below(random, other.size() + 1));
        break;
    }
    default:
        input.resize(place);
    }
}

void try_input(const std::string& input, const fs::path& kept)
{
    if (!kept.empty())
        std::ofstream(kept, std::ios::binary) << input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 3)
        return EXIT_FAILURE;
    const fs::path kept = count > 3 ? arguments[3] : "";
    const std::vector<std::string> corpus = read_corpus(arguments[1]);
    if (corpus.empty())
        return EXIT_FAILURE;
    for (const std::string& input : corpus)
        try_input(input, kept);
    Random random(1);
    const int inputs = std::atoi(arguments[2]);
    for (int i = 0; i < inputs; ++i) {
        std::string input = corpus[below(random, corpus.size())];
        for (std::size_t changes = 1 + below(random, 6); changes > 0; --changes)
            change_once(input, corpus, random);
        input.resize(std::min(input.size(), largest_input));
        try_input(input, kept);
    }
    std::cout << corpus.size() + static_cast<std::size_t>(inputs) << " inputs\n";
    return EXIT_SUCCESS;
}
