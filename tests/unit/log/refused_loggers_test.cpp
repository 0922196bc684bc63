#include <gtest/gtest.h>

#include "log/Log.h"
#include "log/ScopeTimer.h"
#include "support/fixtures.h"

using namespace zvtest;

namespace {

struct Refusal {
    Refusal() { FakeLoggerLibrary::instance().refuse_loggers(true); }
};

// Ahead of the producer's own objects, which ask for their loggers while the program starts.
__attribute__((init_priority(101), used)) const Refusal refusal;

} // namespace

TEST(RefusedLoggers, LeaveEveryEntryPointWithoutEffect)
{
    ASSERT_EQ(6U, FakeLoggerLibrary::instance().init_calls().size());
    for (ZVPocoLogger* const logger :
         {zvgentl::api_logger, zvgentl::system_module_logger, zvgentl::buffer_module_logger,
          zvgentl::camera_module_logger, zvgentl::event_module_logger, zvgentl::stream_module_logger}) {
        EXPECT_EQ(nullptr, logger);
        zvgentl::log_error(logger, "f", zvgentl::At{1}, "x");
        const zvgentl::ScopeTimer timer(logger, "f", zvgentl::At{2}, zvgentl::Priority::fatal);
    }
    EXPECT_TRUE(FakeLoggerLibrary::instance().lines().empty());
}

TEST_F(RunningQueuedStream, WorksWithoutLoggers)
{
    deliver(*buffers[0]);
    EXPECT_EQ(buffers[0]->handle, take().data.BufferHandle);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSClose(dev));
    stop();
    EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    EXPECT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    EXPECT_LOG_LINES();
}
