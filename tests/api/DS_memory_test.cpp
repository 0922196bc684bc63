#include <string>
#include <vector>

#include "api/DS_modes.h"
#include "support/FailingAllocations.h"

// Announcing when memory runs out: the call fails as a whole and leaves nothing behind.

using namespace zvtest;

namespace {

class AnnounceWithoutMemory : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        log.set_level(Priority::fatal); // lines need memory as well, and may be lost
    }

    /// Lets each allocation of the call fail in turn and gives the handle of the call in which none failed.
    template <class Announcing>
    BUFFER_HANDLE fail_everywhere(Announcing announcing)
    {
        const size_t before = num_announced();
        for (long n = 1;; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            BUFFER_HANDLE handle = untouched<BUFFER_HANDLE>();
            GC_ERROR code = GC_ERR_SUCCESS;
            bool has_struck = false;
            {
                const auto faults = FailingAllocations::nth(n);
                code = announcing(&handle);
                has_struck = faults.struck();
            }
            if (!has_struck) {
                EXPECT_EQ(GC_ERR_SUCCESS, code);
                EXPECT_EQ(before + 1, num_announced());
                EXPECT_LT(1, n) << "nothing was allocated, so nothing was tested";
                return handle;
            }
            EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, code);
            EXPECT_EQ(nullptr, handle);
            EXPECT_EQ(before, num_announced());
            expect_no_trace_in_the_library();
            if (HasFailure())
                return nullptr;
        }
    }

    /// A buffer that failed is not revoked, and a frame for it finds nothing.
    void expect_no_trace_in_the_library()
    {
        EXPECT_EQ(0U, fake.count("ZVGR_BufferRevoke"));
        if (!is_queued())
            return;
        log.clear_lines();
        log.set_level(Priority::warning);
        fake.deliver_queued(fake.last_buffer());
        EXPECT_LOGGED(Priority::warning,
                      "stream handle 0x" + hex(fake.last_buffer()) + " wasn't found in m_StreamBufferMap");
        log.set_level(Priority::fatal);
    }
};

TEST_P(AnnounceWithoutMemory, FailsWithoutATrace)
{
    // Containers of the pool grow in blocks, so that which allocation fails depends on how full they are.
    uint8_t memory[70];
    announce();
    start();
    for (uint8_t& byte : memory) {
        ASSERT_NE(nullptr, fail_everywhere([&](BUFFER_HANDLE* out) {
                      return DSAnnounceBuffer(ds, &byte, 1, nullptr, out);
                  }));
    }
    EXPECT_NE(nullptr, fail_everywhere([&](BUFFER_HANDLE* out) {
                  return DSAllocAndAnnounceBuffer(ds, 100000, nullptr, out);
              }));
    for (uint32_t i = 0; i < 72; ++i) {
        BUFFER_HANDLE handle = nullptr;
        ASSERT_EQ(GC_ERR_SUCCESS, DSGetBufferID(ds, i, &handle));
        ASSERT_NE(nullptr, handle);
    }
}

TEST_P(AnnounceWithoutMemory, FindsAKnownBuffer)
{
    Announced& buffer = announce();
    BUFFER_HANDLE again = nullptr;
    const CountedAllocations counted;
    const GC_ERROR code = DSAnnounceBuffer(ds, buffer.memory.data(), buffer.memory.size(), nullptr, &again);
    EXPECT_EQ(0, counted.count());
    EXPECT_EQ(GC_ERR_SUCCESS, code);
    EXPECT_EQ(buffer.handle, again);
}

INSTANTIATE_IN_BOTH_MODES(AnnounceWithoutMemory);

class CyclicAllocation : public CyclicStream {
protected:
    void expect_refused(size_t size)
    {
        BUFFER_HANDLE handle = untouched<BUFFER_HANDLE>();
        EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, DSAllocAndAnnounceBuffer(ds, size, nullptr, &handle)) << size;
        EXPECT_EQ(nullptr, handle) << size;
        EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value) << size;
    }
};

TEST_F(CyclicAllocation, IsRefusedWhenThereIsNoRoomForTheImage)
{
    const auto faults = FailingAllocations::of_at_least(100000);
    expect_refused(100000);
    EXPECT_TRUE(faults.struck());
}

TEST_F(CyclicAllocation, IsRefusedForSizesBeyondEveryMemory)
{
    for (const size_t size : {size_t{1} << 62, SIZE_MAX / 2, SIZE_MAX - 4096, SIZE_MAX - 4095, SIZE_MAX})
        expect_refused(size);
}

} // namespace
