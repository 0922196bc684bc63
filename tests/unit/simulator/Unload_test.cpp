#include <set>
#include <thread>

#include <gmock/gmock.h>

#include "support/process/process_state.h"
#include "unit/simulator/LoadedLibrary.h"

// The library when it is unloaded, and when the process ends, in every state.

namespace {

using namespace zvsim_test;

/// The threads of this process while it runs none but the main one and those of a sanitizer, which begin with
/// the first other thread.
size_t resting_threads()
{
    pid_t thread = 0;
    std::thread{[&] { thread = zvtest::this_thread(); }}.join();
    EXPECT_TRUE(
        becomes_true([&] { return !std::filesystem::exists("/proc/self/task/" + std::to_string(thread)); }));
    return zvtest::thread_count();
}

TEST(Unload, LeavesNothingAfterEverythingWasClosed)
{
    std::set<std::string> descriptors;
    size_t others = 0;
    for (int round = 0; round < 20; ++round) {
        {
            Loaded loaded;
            loaded.start(Mode::queued);
            EXPECT_TRUE(loaded.receiver.wait_for(5));
            EXPECT_EQ(success, loaded.library.stop(loaded.camera));
            EXPECT_EQ(success, loaded.library.stream_delete(loaded.stream));
            EXPECT_EQ(success, loaded.library.camera_close(loaded.camera));
            EXPECT_EQ(success, loaded.library.close(loaded.grabber));
        }
        EXPECT_FALSE(LoadedLibrary::is_mapped());
        if (round == 0) { // what the process itself opens and starts, it has by now
            descriptors = zvtest::open_descriptors();
            others = resting_threads();
        }
        EXPECT_EQ(descriptors, zvtest::open_descriptors());
        EXPECT_TRUE(threads_become(others));
    }
}

TEST(Unload, LeavesNothingWhetherOrNotTheLibraryWasUsed)
{
    LoadedLibrary{}.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
    const size_t before = resting_threads();
    {
        Loaded loaded;
        EXPECT_EQ(success, loaded.library.stream_create_and_alloc(loaded.camera, &loaded.stream, 4, 0));
    }
    EXPECT_FALSE(LoadedLibrary::is_mapped());
    EXPECT_TRUE(threads_become(before));
}

TEST(Unload, EndsStreamsFirst)
{
    for (const Mode mode : {Mode::queued, Mode::cyclic}) {
        const size_t before = resting_threads();
        Loaded loaded;
        loaded.start(mode);
        EXPECT_TRUE(loaded.receiver.wait_for(5));
        loaded.library.unload();
        loaded.receiver.expect_silence();
        EXPECT_FALSE(LoadedLibrary::is_mapped());
        EXPECT_TRUE(threads_become(before));
    }
}

TEST(Unload, WaitsForACallbackThatDeletedItsStream)
{
    const size_t before = resting_threads();
    Loaded loaded;
    Gate deleted;
    bool has_returned = false;
    loaded.start(Mode::cyclic);
    loaded.library.stop(loaded.camera);
    loaded.receiver.on_call = [&](uint64_t /*stream*/) {
        EXPECT_EQ(success, loaded.library.stream_delete(loaded.stream));
        EXPECT_EQ(success, loaded.library.close(loaded.grabber));
        deleted.open();
        Gate{}.stays_closed(); // still inside while the library is being unloaded
        has_returned = true;
    };
    EXPECT_EQ(success, loaded.library.start(loaded.camera, loaded.stream, 0));
    ASSERT_TRUE(deleted.wait());
    loaded.library.unload();
    EXPECT_TRUE(has_returned);
    EXPECT_FALSE(LoadedLibrary::is_mapped());
    EXPECT_TRUE(threads_become(before));
}

/// Runs at the end of a process, after what the library has registered: nothing of it may be left, and calls
/// must fail without harm. The library stays loaded.
Loaded* at_exit = nullptr;
size_t threads_before = 0;

void check_at_exit()
{
    at_exit->receiver.expect_silence();
    uint32_t count = 0;
    const bool is_quiet = threads_become(threads_before);
    const bool is_closed = at_exit->library.close(at_exit->grabber) != success &&
                           at_exit->library.stop(at_exit->camera) != success &&
                           at_exit->library.start(at_exit->camera, at_exit->stream, 0) != success &&
                           at_exit->library.device_scan(&count) == success && count == 0 &&
                           at_exit->library.open(0) == ZV_NO_HANDLE;
    if (!is_quiet || !is_closed)
        std::_Exit(is_quiet ? 2 : 3);
}

void exit_while_frames_run(Mode mode)
{
    threads_before = resting_threads();
    static Loaded loaded; // destroyed at the end of the process, after the library has ended its streams
    at_exit = &loaded;
    std::atexit(check_at_exit);
    loaded.start(mode);
    if (!loaded.receiver.wait_for(5))
        std::_Exit(4);
    std::exit(0);
}

void exit_inside_a_callback()
{
    static Loaded* const loaded = new Loaded; // not unloaded: its thread is the one that exits
    loaded->receiver.on_call = [](uint64_t /*stream*/) { std::exit(0); };
    loaded->start(Mode::cyclic);
    for (;;)
        std::this_thread::yield();
}

void exit_while_a_callback_hangs()
{
    static Loaded* const loaded = new Loaded; // the callback needs it to the very end
    static Gate entered;
    loaded->receiver.on_call = [](uint64_t /*stream*/) {
        entered.open();
        for (;;)
            std::this_thread::yield();
    };
    loaded->start(Mode::cyclic);
    if (!entered.wait())
        std::_Exit(4);
    std::exit(0);
}

struct Exit {
    const char* name;
    void (*exit)();
};

class ExitOfAProcess : public testing::TestWithParam<Exit> {
protected:
    ExitOfAProcess() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_P(ExitOfAProcess, IsClean) { EXPECT_EXIT(GetParam().exit(), testing::ExitedWithCode(0), ""); }

INSTANTIATE_TEST_SUITE_P(While, ExitOfAProcess,
                         testing::Values(Exit{"QueuedFramesRun", [] { exit_while_frames_run(Mode::queued); }},
                                         Exit{"CyclicFramesRun", [] { exit_while_frames_run(Mode::cyclic); }},
                                         Exit{"ACallbackExits", &exit_inside_a_callback},
                                         Exit{"ACallbackHangs", &exit_while_a_callback_hangs}),
                         [](const auto& row) { return row.param.name; });

/// The log of a library that is loaded meanwhile.
class Log {
public:
    Log()
    {
        folder.write("logger.properties", "logging.loggers.root.channel = file\n"
                                          "logging.loggers.root.level = warning\n"
                                          "logging.channels.file.class = FileChannel\n"
                                          "logging.channels.file.path = " +
                                              folder.file("grabber.log").string() + "\n");
    }

    const Folder folder;

private:
    const Variable m_variable{"ZV_LOGGER_CONFIG", folder.file("logger.properties").string()};
};

TEST(Log, HasWarningsAndEachErrorOfAConfigurationOnce)
{
    const Log log;
    const std::string file = log.folder.file("grabbers.yaml").string();
    {
        const Variable malformed{"ZV_GRABBER_RATE", "very fast"};
        LoadedLibrary library;
        uint32_t count = 0;
        EXPECT_EQ(success, library.device_scan(&count));
        EXPECT_EQ(3U, count);
        log.folder.write("grabbers.yaml", "grabbers:\n  - nmae: x\n");
        const Variable named{"ZV_GRABBER_CONFIG", file};
        for (int scan = 0; scan < 3; ++scan) {
            EXPECT_EQ(success, library.device_scan(&count));
            EXPECT_EQ(0U, count);
        }
    }
    const std::string text = text_of(log.folder.file("grabber.log"));
    const std::string error =
        file + ":2: unknown grabber key \"nmae\"; did you mean name? Allowed: name, protocol";
    EXPECT_THAT(text, testing::HasSubstr("ZV_GRABBER_RATE=very fast is ignored"));
    EXPECT_THAT(text, testing::HasSubstr("no grabbers are offered: their configuration has errors"));
    ASSERT_THAT(text, testing::HasSubstr(error));
    EXPECT_EQ(std::string::npos, text.find(error, text.find(error) + 1));
}

} // namespace
