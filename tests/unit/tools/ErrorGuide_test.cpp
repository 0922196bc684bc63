#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "gentl/Error.h"
#include "support.h"
#include "zvgentl/ErrorGuide.h"

namespace zvgentl::test {

using namespace tool;
using namespace GenTL;

namespace {

/// The codes, each with the functions that are explained: "-1004 TLOpen IFOpenDevice, ".
std::string found_in(const std::string& text)
{
    std::string found;
    for (const ErrorGuide& guide : explain(text)) {
        found += (found.empty() ? "" : ", ") + std::to_string(guide.code);
        for (const FunctionGuide& row : guide.functions)
            found += std::string(" ") + row.function;
    }
    return found;
}

} // namespace

TEST(ErrorGuide, FindsCodesHoweverTheyAreWritten)
{
    const std::pair<const char*, const char*> cases[] = {
        {"-1010", "-1010"},
        {"0", "0"},
        {"0xFFFFFC0E", "-1010"},
        {"GC_ERR_IO", "-1010"},
        {"gc_err_io", "-1010"},
        {"io", "-1010"},
        {"error", "-1001 DevClose IFUpdateDeviceList"},
        {"IFOpenDevice failed with GC_ERR_ACCESS_DENIED (-1005): ZVGR_CameraOpen failed: error 4097",
         "-1005 IFOpenDevice"},
        {"TLOpen GC_ERR_ERROR", "-1001"},
        {"IFGetNumDevices failed with GC_ERR_RESOURCE_IN_USE (-1004)", "-1004"},
        {"ifupdatedevicelist", "-1001 IFUpdateDeviceList, -1014 IFUpdateDeviceList"},
        {"Exit, Returning error GC_ERR_NO_DATA (0xFFFFFC10)", "-1008"},
        {"-1008 or -1010", "-1008, -1010"},
    };
    for (const auto& [text, found] : cases)
        EXPECT_EQ(found, found_in(text)) << text;
}

TEST(ErrorGuide, KnowsEveryCodeOfTheStandard)
{
    for (GC_ERROR code = GC_ERR_ERROR; code >= GC_ERR_BUSY; --code)
        EXPECT_THAT(to_text(explain(std::to_string(code))), Not(HasSubstr("no such code"))) << code;
}

TEST(ErrorGuide, TellsCodesOfAProducerFromUnknownOnes)
{
    EXPECT_THAT(to_text(explain("-10001")), HasSubstr("A code of the producer's own."));
    EXPECT_EQ(
        "error -2000 (-2000)\n  The standard has no such code.\n  Read the text of GCGetLastError and the "
        "log of the producer.\n",
        to_text(explain("-2000")));
}

TEST(ErrorGuide, ShowsCauseAndRemedy)
{
    EXPECT_EQ("GC_ERR_RESOURCE_IN_USE (-1004)\n"
              "  What is asked for is in use already, by this application or by another one.\n"
              "  Close it where it is open, or use the handle that is open already.\n"
              "  TLOpen:\n"
              "    The system is open already.\n"
              "    Open it once in a process and share the handle.\n",
              to_text(explain("TLOpen -1004")));
}

TEST(ErrorGuide, RefusesWhatItDoesNotKnow)
{
    const std::pair<const char*, const char*> cases[] = {
        {"GC_ERR_ACESS_DENIED", "did you mean GC_ERR_ACCESS_DENIED?"},
        {"EventGetDate", "did you mean EventGetData?"},
        {"nothing of that kind at all", "write a number such as -1004 or a name such as GC_ERR_IO"},
        {"1001", "write a number such as -1004"},
        {"0x10", "write a number such as -1004"},
        {"-99999999999", "write a number such as -1004"},
    };
    for (const auto& [text, reason] : cases)
        EXPECT_THAT(error_of([text = text] { explain(text); }), HasSubstr(reason)) << text;
}

TEST(Explain, PrintsTextOrJson)
{
    EXPECT_THAT(run_program_with({"explain", "-1005"}).output, StartsWith("GC_ERR_ACCESS_DENIED (-1005)\n"));
    EXPECT_THAT(
        run_program_with({"explain", "GC_ERR_IO", "--json"}).output,
        StartsWith("{\n  \"explanations\": [\n    {\n      \"code\": -1010,\n      \"name\": \"GC_ERR_IO\",\n"
                   "      \"function\": null,\n"));
    EXPECT_EQ(1, run_program_with({"explain", "nonsense"}).code);
}

} // namespace zvgentl::test
