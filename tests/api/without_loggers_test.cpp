#include "support/fixtures.h"

using namespace zvtest;

namespace {

struct Refusal {
    Refusal() { FakeLoggerLibrary::instance().refuse_loggers(true); }
};

// Ahead of the producer's own objects, which ask for their loggers while the program starts.
__attribute__((init_priority(101), used)) const Refusal refusal;

} // namespace

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
