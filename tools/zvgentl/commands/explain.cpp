#include <cstdio>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "gentl/texts.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/ErrorGuide.h"
#include "zvgentl/Json.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

struct ExplainOptions {
    std::vector<std::string> words;
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl explain -1005\n"
    "  zvgentl explain GC_ERR_ACCESS_DENIED\n"
    "  zvgentl explain IFOpenDevice\n"
    "  zvgentl explain \"IFOpenDevice failed with GC_ERR_ACCESS_DENIED (-1005)\"\n"
    "\n"
    "Says what an error code of GenTL means in general and in the functions of ZVGRLibGenTL.cti, and\n"
    "what to do next. The text may be a number, decimal or hexadecimal as the log writes it, a name, a\n"
    "function, or a whole message. No producer is loaded, so GENICAM_GENTL64_PATH does not matter.\n"
    "\n"
    "Exit codes: 0 explained, 1 not known, 2 wrong command line.";

void describe(OptionList& list, ExplainOptions& options)
{
    list.positional("TEXT", "Error code, function or message to explain", options.words);
    list.flag("--json", "Print JSON instead of text", options.json);
}

std::vector<NamedValues> rows_of(const std::vector<ErrorGuide>& guides)
{
    std::vector<NamedValues> rows;
    for (const ErrorGuide& guide : guides) {
        const auto add = [&](const std::string& function, const std::string& meaning,
                             const std::string& remedy) {
            rows.push_back({{"code", std::int64_t{guide.code}},
                            {"name", guide.name},
                            {"function", function.empty() ? Value() : Value(function)},
                            {"meaning", meaning},
                            {"remedy", remedy}});
        };
        add("", guide.meaning, guide.remedy);
        for (const FunctionGuide& row : guide.functions)
            add(row.function, row.cause, row.remedy);
    }
    return rows;
}

int explain_words(const ExplainOptions& options)
{
    const auto guides = explain(joined(options.words, " "));
    print_output(options.json ? json_text("explanations", rows_of(guides)) : to_text(guides));
    return exit_success;
}

const CommandRegistration registration({"explain", "Say what an error code means and what to do", footer},
                                       describe, explain_words);

} // namespace

} // namespace zvgentl::tool
