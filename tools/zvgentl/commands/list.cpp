#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include "gentl/Producer.h"
#include "zvgentl/Command.h"
#include "zvgentl/ProducerTree.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer = "Examples:\n"
                               "  zvgentl list\n"
                               "  zvgentl list --json | jq \".producers[].interfaces[].devices[].id\"\n"
                               "  zvgentl list --cti build/release/bin/ZVGRLibGenTL.cti\n"
                               "\n"
                               "Exit codes: 0 listed, 1 a producer could not be used, 2 wrong command line.";

class ListCommand final : public Command {
public:
    std::string name() const override { return "list"; }
    std::string summary() const override { return "Show the producers' interfaces and devices"; }

    void add_options(CLI::App& app) override
    {
        add_producer_option(app, m_cti);
        app.add_flag("--streams", m_streams,
                     "List the data streams too; this opens every device for a moment");
        app.add_flag("--json", m_json, "Print JSON for programs instead of text");
        app.footer(footer);
    }

    int run() override
    {
        std::vector<ProducerEntry> producers;
        for (const auto& file : find_producers(std::filesystem::u8path(m_cti)))
            producers.push_back(read_producer(file, m_streams ? Streams::listed : Streams::left_out));
        if (m_json)
            print_json(producers);
        else
            print_text(producers);
        // An interface that another program holds is no failure of the list: it is shown as what it is.
        return std::any_of(producers.begin(), producers.end(), is_unreadable) ? exit_failure : exit_success;
    }

private:
    static void print_json(const std::vector<ProducerEntry>& producers)
    {
        nlohmann::ordered_json json{{"producers", nlohmann::ordered_json::array()}};
        for (const auto& producer : producers)
            json["producers"].push_back(to_json(producer));
        fmt::print("{}\n", json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    }

    static void print_text(const std::vector<ProducerEntry>& producers)
    {
        const char* separator = "";
        for (const auto& producer : producers) {
            fmt::print("{}", separator);
            // What went wrong is for whoever looks at the errors only, too.
            fmt::print(producer.problem.empty() ? stdout : stderr, "{}", to_text(producer));
            separator = "\n";
        }
    }

    static bool is_unreadable(const ProducerEntry& producer) { return !producer.problem.empty(); }

    std::string m_cti;
    bool m_streams{false};
    bool m_json{false};
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<ListCommand>();
});

} // namespace

} // namespace zvgentl::tool
