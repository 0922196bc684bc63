#include <stdexcept>

#include "api/ApiCall.h"
#include "support/fixtures.h"

// The lines here have the numbers of real ones: every line that is captured must be in the table of lines.

namespace zvtest {

namespace {

using zvgentl::after_exception;
using zvgentl::ApiCall;
using zvgentl::At;

class ApiCallTest : public OpenLibrary {
protected:
    const ApiCall call{"TLOpen"};
    const ApiCall quiet{"GCGetLastError", zvgentl::Priority::debug};
    const ApiCall per_frame{"DSQueueBuffer", zvgentl::Priority::trace};
};

TEST_F(ApiCallTest, LogsTrafficWithItsPriority)
{
    call.log(At{1504}, "Enter %s", "TLOpen");
    quiet.log(At{650}, "Enter %s", "GCGetLastError");
    per_frame.log(At{3010}, "Enter DSQueueBuffer, stream handle=0x%X, buffer handle=0x%X", 0xABU, 1U);
    EXPECT_LOG_LINES(
        {Priority::information, "Enter TLOpen", "TLOpen", "ZVGRLibGenTL"},
        {Priority::debug, "Enter GCGetLastError", "GCGetLastError", "ZVGRLibGenTL"},
        {Priority::trace, "Enter DSQueueBuffer, stream handle=0xAB, buffer handle=0x1", "DSQueueBuffer"});
    EXPECT_EQ(1504, log.lines()[0].number);
}

TEST_F(ApiCallTest, LogsInformationAndErrorsAtTheirOwnPriority)
{
    const ApiCall list{"TLUpdateInterfaceList", zvgentl::Priority::trace};
    list.log_info(At{1572}, "TLUpdateInterfaceList - Found %d Grabbers", 7);
    const ApiCall id{"TLGetInterfaceID", zvgentl::Priority::trace};
    id.log_error(At{1671}, "Invalid inteface index %u", 7U);
    EXPECT_LOG_LINES({Priority::information, "TLUpdateInterfaceList - Found 7 Grabbers"},
                     {Priority::error, "Invalid inteface index 7"});
}

TEST_F(ApiCallTest, Succeeds)
{
    EXPECT_EQ(GC_ERR_SUCCESS, quiet.succeed(At{668}, "Exit GCGetLastError"));
    EXPECT_LOG_LINES({Priority::debug, "Exit GCGetLastError", "GCGetLastError"});
}

TEST_F(ApiCallTest, FailsWithNameAndCode)
{
    EXPECT_EQ(GC_ERR_ERROR, call.fail(At{1517}, GC_ERR_ERROR));
    EXPECT_LOG_LINES({Priority::error, "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17)", "TLOpen"});
}

TEST_F(ApiCallTest, RecordsAndLogsATextAsItIs)
{
    const ApiCall open{"IFOpenDevice"};
    const std::string text = "IFOpenDevice - GC_ERR_INVALID_ID: Invalid device Id %s%n%d";
    open.record_error(At{2400}, text);
    EXPECT_LOG_LINES({Priority::error, text, "IFOpenDevice"});
    EXPECT_EQ(text, last_error());
}

TEST_F(ApiCallTest, KnowsWhetherTheLibraryIsOpen)
{
    EXPECT_TRUE(call.library_is_open(At{1506}));
    EXPECT_LOG_LINES();
    GCCloseLib();
    forget();
    EXPECT_FALSE(call.library_is_open(At{1506}));
    EXPECT_LOG_LINES({Priority::error, "No preceding call to GCInitLib", "TLOpen"});
}

TEST_F(ApiCallTest, StopsExceptionsOfEveryTypeAtTheBoundaryAndRecordsNone)
{
    const std::string before = last_error();
    forget();
    try {
        throw std::runtime_error("broken %s");
    } catch (...) {
        EXPECT_EQ(GC_ERR_ERROR, after_exception("TLOpen"));
    }
    try {
        throw 7;
    } catch (...) {
        EXPECT_EQ(GC_ERR_ERROR, after_exception("TLOpen"));
    }
    EXPECT_LOG_LINES({Priority::error,
                      "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), exception: broken %s", "TLOpen",
                      "ZVGRLibGenTL"},
                     {Priority::error, "Exit, Returning error GC_ERR_ERROR (0xFFFFFC17), unknown exception",
                      "TLOpen", "ZVGRLibGenTL"});
    EXPECT_EQ(before, last_error());
}

} // namespace

} // namespace zvtest
