#include <vector>

#include "api/DS_modes.h"

// What is special to DSGetInfo among the info queries: when a buffer counts as started.

using namespace zvtest;

namespace {

class StreamInfo : public EitherStream {
protected:
    uint64_t num_started() { return stream_info<uint64_t>(STREAM_INFO_NUM_STARTED).value; }
};

TEST_P(StreamInfo, CountsABufferAsStartedOnceItIsQueuedAgainDuringItsDelivery)
{
    const Announced& filling = announce();
    queue(filling);
    start();
    std::vector<uint64_t> started;
    size_t queued = 1;
    bool is_being_filled = false;
    fake.on(within_delivery(), [&](const Call&) {
        started.push_back(num_started());
        queue(filling);
        started.push_back(num_started());
        queued = num_queued();
        is_being_filled = is_acquiring(filling);
    });
    deliver(filling);
    ASSERT_LE(2U, started.size());
    EXPECT_EQ(0U, started[0]);
    EXPECT_EQ(1U, started[1]);
    EXPECT_EQ(0U, queued);
    EXPECT_TRUE(is_being_filled);
    EXPECT_EQ(0U, num_started());
    EXPECT_EQ(1U, num_queued()) << "delivered and queued again";
}

INSTANTIATE_IN_BOTH_MODES(StreamInfo);

} // namespace
