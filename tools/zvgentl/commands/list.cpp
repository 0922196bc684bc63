#include <algorithm>

#include "gentl/Producer.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/Output.h"
#include "zvgentl/ProducerTree.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl list\n"
    "  zvgentl list --json | jq \".producers[].interfaces[].devices[].id\"\n"
    "  zvgentl list --cti build/release/bin/ZVGRLibGenTL.cti\n"
    "\n"
    "Exit codes: 0 listed, 1 a producer could not be used, or its software grabbers are\n"
    "not as they are configured, 2 wrong command line.";

void describe(OptionList& list, ListOptions& options)
{
    describe_producer(list, options.cti);
    list.flag("--streams", "Also list the data streams; this opens each device for a moment",
              options.streams);
    list.flag("--json", "Print JSON instead of text", options.json);
}

const CommandRegistration registration({"list", "Show the producers' interfaces and devices", footer},
                                       describe, run);

void print_text(const std::vector<ProducerEntry>& producers)
{
    const char* separator = "";
    for (const auto& producer : producers) {
        print_output(separator);
        // Errors go to the error output, where scripts look for them.
        if (producer.problem.empty())
            print_output(to_text(producer));
        else
            print_error(to_text(producer));
        print_error(report_text(producer));
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
        print_output(json_text(producers));
    else
        print_text(producers);
    // An interface that another program uses is not a failure of the list, which shows why it cannot be read.
    const bool all_is_well = std::all_of(producers.begin(), producers.end(), [](const auto& producer) {
        return producer.problem.empty() && producer.report.empty();
    });
    return all_is_well ? exit_success : exit_failure;
}

} // namespace zvgentl::tool
