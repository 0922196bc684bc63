#include "hostile/input.h"
#include "logger/ChannelSet.h"

using namespace zvlog;

// Makes the channels, which opens nothing. No line is written: the input may name any file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Problems problems;
    const Configuration configuration(zvhostile::text_of(data, size), problems);
    ChannelSet channels(configuration, "/log", problems);
    std::size_t characters = 0;
    for (const std::string& name : configuration.children("logging.loggers")) {
        channels.channel_of("logging.loggers." + name);
        characters += configuration.value("logging.loggers." + name + ".level").value_or("").size();
    }
    zvhostile::require(characters < 2000000, "references lead to a bounded text");
    zvhostile::require(problems.size() <= 4 * size + 4, "there are not many more problems than letters");
    return 0;
}
