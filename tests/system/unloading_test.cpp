#include <array>
#include <filesystem>

#include "system/fixture.h"

// Loading and unloading over and over: the process is afterwards what it was before.

using namespace GenTL;
using namespace zvsystem;

namespace {

constexpr int warm_up_rounds = 10;
constexpr int rounds = 100;
constexpr size_t mebibyte = size_t{1} << 20U;

void ask_for_the_path(const Functions& gentl)
{
    std::array<char, 1024> path{};
    size_t size = path.size();
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.GCGetInfo(TL_INFO_PATHNAME, &type, path.data(), &size));
    ASSERT_EQ(std::filesystem::path(producer_file), path.data());
    const System system(gentl);
    size = path.size();
    ASSERT_EQ(GC_ERR_SUCCESS, gentl.TLGetInfo(system.handle(), TL_INFO_PATHNAME, &type, path.data(), &size));
    ASSERT_EQ(std::filesystem::path(producer_file), path.data());
}

void receive(Camera& camera)
{
    camera.announce(4);
    camera.start_and_queue();
    FrameCheck{camera}.stream(8);
}

struct Use {
    const char* name;
    void (*use)(const Functions& gentl);
};

std::ostream& operator<<(std::ostream& out, const Use& row) { return out << row.name; }

const Use uses[] = {
    {"AnUnloadWithoutAClose", [](const Functions& /*gentl*/) {}},
    {"PathQueries",
     [](const Functions& gentl) {
         ask_for_the_path(gentl);
         gentl.GCCloseLib();
     }},
    {"Streaming",
     [](const Functions& gentl) {
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
     }},
    // Nothing but GCCloseLib is called: the device is open, the stream acquires, buffers are announced, some
    // of them in the event's queue, and the event is registered.
    {"AnEndWithEverythingOpen",
     [](const Functions& gentl) {
         ask_for_the_path(gentl);
         System system(gentl);
         Camera camera(gentl, system.open_interface("FG0"), "Device00");
         receive(camera);
         camera.abandon();
         system.abandon();
         EXPECT_EQ(GC_ERR_SUCCESS, gentl.GCCloseLib());
     }},
};

class Unloading : public testing::TestWithParam<Use> {
protected:
    static void SetUpTestSuite() { hold_libraries_of_others(producer_file); }

    /// Loads, uses and unloads the producer several times, in both modes by turns.
    void use_it(int times)
    {
        for (int round = 0; round < times && !HasFailure(); ++round) {
            surroundings_in(round % 2 == 0 ? Mode::queued : Mode::cyclic);
            {
                const Library library(producer_file);
                ASSERT_TRUE(is_mapped("ZVGRLibGenTL.cti"));
                ASSERT_EQ(GC_ERR_SUCCESS, library.functions().GCInitLib());
                GetParam().use(library.functions());
            }
            EXPECT_FALSE(is_mapped("ZVGRLibGenTL.cti"));
            EXPECT_FALSE(is_mapped(ZV_GRABBER_LIBRARY));
            EXPECT_FALSE(is_mapped(ZV_LOGGER_LIBRARY));
        }
    }

private:
    const GrabberFile m_camera_that_starts_at_once{R"(grabbers:
  - cameras: [{sensor_width: 160, sensor_height: 120, start_up: 0 ms}]
)"};
};

// What the process keeps for good (the C library's own arenas, libraries of others) is there after the
// warm-up.
TEST_P(Unloading, LeavesNothingBehind)
{
    use_it(warm_up_rounds);
    const auto descriptors = open_descriptors();
    const size_t threads = thread_count();
    const size_t heap = heap_in_use();
    const MemorySize memory = memory_size();

    use_it(rounds);

    EXPECT_EQ(descriptors, open_descriptors());
    // A thread that was joined leaves the list of threads a little later.
    EXPECT_TRUE(eventually([threads] { return thread_count() == threads; }));
    if (is_sanitized)
        return;
    // The allocator keeps small freed blocks by the thread, and counts them as used.
    EXPECT_LT(heap_in_use(), heap + 16 * 1024);
    // Less than a page a round: fragments. One frame buffer a round would be nearly two mebibytes, one ring
    // with the readable memory behind it six gibibytes of address space.
    EXPECT_LT(memory_size().resident, memory.resident + mebibyte / 2);
    EXPECT_LT(memory_size().virtual_space, memory.virtual_space + 256 * mebibyte);
}

INSTANTIATE_TEST_SUITE_P(After, Unloading, testing::ValuesIn(uses),
                         [](const testing::TestParamInfo<Use>& row) { return row.param.name; });

// Two loads share one library: only the second unload removes it.
TEST(UnloadingALibraryThatWasLoadedTwice, WaitsForTheLastUser)
{
    surroundings();
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
