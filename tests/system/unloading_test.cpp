#include <array>
#include <filesystem>
#include <string>

#include "system/fixture.h"
#include "system/process_state.h"

// Loading and unloading over and over: the process is afterwards what it was before.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr int warm_up_rounds = 10;
constexpr int rounds = 100;
constexpr size_t mebibyte = size_t{1} << 20U;

class Unloading : public testing::Test {
protected:
    static void SetUpTestSuite() { hold_libraries_of_others(producer_file); }

    using Use = void (*)(const Functions& gentl);

    /// Loads, uses and unloads the producer, once.
    void use_once(Use use)
    {
        {
            const Library library(producer_file);
            ASSERT_TRUE(is_mapped("ZVGRLibGenTL.cti"));
            ASSERT_EQ(GC_ERR_SUCCESS, library.functions().GCInitLib());
            use(library.functions());
        }
        EXPECT_FALSE(is_mapped("ZVGRLibGenTL.cti"));
        EXPECT_FALSE(is_mapped(ZV_GRABBER_LIBRARY));
        EXPECT_FALSE(is_mapped(ZV_LOGGER_LIBRARY));
    }

    /// The same a hundred times, in both modes by turns. What the process keeps for good (the C library's own
    /// arenas, the libraries that others provide) is there after the warm-up.
    void expect_no_trace_of(Use use)
    {
        for (int round = 0; round < warm_up_rounds; ++round)
            use_once_in_mode_of(round, use);
        const auto descriptors = open_descriptors();
        const size_t threads = thread_count();
        const size_t heap = heap_in_use();
        const MemorySize memory = memory_size();

        for (int round = 0; round < rounds && !HasFailure(); ++round)
            use_once_in_mode_of(round, use);

        EXPECT_EQ(descriptors, open_descriptors());
        // A thread that was joined leaves the list of threads a little later.
        EXPECT_TRUE(eventually([threads] { return thread_count() == threads; }));
        if (is_sanitized)
            return;
        // The allocator keeps small freed blocks by the thread, and counts them as used.
        EXPECT_LT(heap_in_use(), heap + 16 * 1024);
        // Less than a page a round: fragments. One frame buffer a round would be thirty mebibytes, one ring
        // with its guard six gibibytes of address space.
        EXPECT_LT(memory_size().resident, memory.resident + mebibyte / 2);
        EXPECT_LT(memory_size().virtual_space, memory.virtual_space + 256 * mebibyte);
    }

private:
    void use_once_in_mode_of(int round, Use use)
    {
        surroundings().set_mode(round % 2 == 0 ? Mode::queued : Mode::cyclic);
        ASSERT_NO_FATAL_FAILURE(use_once(use));
    }
};

void receive(Camera& camera)
{
    camera.announce(4);
    camera.start_and_queue();
    FrameCheck check(camera);
    stream(camera, check, 8);
}

void ask_for_the_path(const Functions& gentl)
{
    std::array<char, 1024> path{};
    size_t size = path.size();
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.GCGetInfo(TL_INFO_PATHNAME, &type, path.data(), &size));
    ASSERT_EQ(std::filesystem::path(producer_file), path.data());
}

TEST_F(Unloading, LeavesNothingAfterALoadAlone)
{
    expect_no_trace_of([](const Functions& gentl) { gentl.GCCloseLib(); });
}

TEST_F(Unloading, LeavesNothingWhenNobodyClosesTheLibrary)
{
    expect_no_trace_of([](const Functions& /*gentl*/) {});
}

TEST_F(Unloading, LeavesNothingAfterPathQueries)
{
    expect_no_trace_of([](const Functions& gentl) {
        ask_for_the_path(gentl);
        {
            const System system(gentl);
            std::array<char, 1024> path{};
            size_t size = path.size();
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            EXPECT_EQ(GC_ERR_SUCCESS,
                      gentl.TLGetInfo(system.handle(), TL_INFO_PATHNAME, &type, path.data(), &size));
            EXPECT_EQ(std::filesystem::path(producer_file), path.data());
        }
        gentl.GCCloseLib();
    });
}

TEST_F(Unloading, LeavesNothingAfterStreaming)
{
    expect_no_trace_of([](const Functions& gentl) {
        {
            const System system(gentl);
            Camera camera(gentl, system.open_interface("FG0"), "Device00");
            receive(camera);
            camera.stop();
            camera.revoke_all();
            EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCUnregisterEvent(camera.stream(), EVENT_NEW_BUFFER));
            camera.close_stream();
        }
        gentl.GCCloseLib();
    });
}

// Nothing but GCCloseLib is called: the device is open, the stream acquires, buffers are announced, some in
// the event's queue, and the event is registered.
TEST_F(Unloading, LeavesNothingAfterAnEndWithEverythingOpen)
{
    expect_no_trace_of([](const Functions& gentl) {
        ask_for_the_path(gentl);
        System system(gentl);
        Camera camera(gentl, system.open_interface("FG0"), "Device00");
        receive(camera);
        camera.abandon();
        system.abandon();
        EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCCloseLib());
    });
}

// Two loads are one library: it goes with the second unload.
TEST_F(Unloading, WaitsForTheLastUser)
{
    {
        const Library first(producer_file);
        {
            const Library second(producer_file);
            EXPECT_EQ(GC_ERR_SUCCESS, second.functions().GCInitLib());
            EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, first.functions().GCInitLib());
        }
        EXPECT_TRUE(is_mapped("ZVGRLibGenTL.cti"));
        EXPECT_EQ(GC_ERR_SUCCESS, first.functions().GCCloseLib());
    }
    EXPECT_FALSE(is_mapped("ZVGRLibGenTL.cti"));
}

} // namespace
