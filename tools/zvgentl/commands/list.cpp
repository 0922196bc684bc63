#include <algorithm>
#include <cstdio>

#include <fmt/core.h>

#include "gentl/Producer.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/ProducerTree.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer = "Examples:\n"
                               "  zvgentl list\n"
                               "  zvgentl list --json | jq \".producers[].interfaces[].devices[].id\"\n"
                               "  zvgentl list --cti build/release/bin/ZVGRLibGenTL.cti\n"
                               "\n"
                               "Exit codes: 0 listed, 1 a producer could not be used, 2 wrong command line.";

void describe(OptionList& list, ListOptions& options)
{
    describe_producer(list, options.cti);
    list.flag("--streams", "List the data streams too; this opens every device for a moment",
              options.streams);
    list.flag("--json", "Print JSON for programs instead of text", options.json);
}

const CommandRegistration registration({"list", "Show the producers' interfaces and devices", footer},
                                       describe, run);

void print_text(const std::vector<ProducerEntry>& producers)
{
    const char* separator = "";
    for (const auto& producer : producers) {
        fmt::print("{}", separator);
        // What went wrong is for whoever looks at the errors only, too.
        fmt::print(producer.problem.empty() ? stdout : stderr, "{}", to_text(producer));
        separator = "\n";
    }
}

} // namespace

int run(const ListOptions& options)
{
    std::vector<ProducerEntry> producers;
    for (const auto& file : find_producers(std::filesystem::u8path(options.cti)))
        producers.push_back(read_producer(file, options.streams ? Streams::listed : Streams::left_out));
    if (options.json)
        fmt::print("{}", json_text(producers));
    else
        print_text(producers);
    // An interface that another program holds is no failure of the list: it is shown as what it is.
    const bool all_were_read = std::all_of(producers.begin(), producers.end(),
                                           [](const auto& producer) { return producer.problem.empty(); });
    return all_were_read ? exit_success : exit_failure;
}

} // namespace zvgentl::tool
