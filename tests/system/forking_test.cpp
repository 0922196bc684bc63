#include <sys/wait.h>
#include <unistd.h>

#include "system/fixture.h"

// A process that acquires and forks: the child has none of its parent's threads, and must not touch the
// grabbers, which are still its parent's.

using namespace GenTL;
using namespace zvsystem;

namespace {

class ForkedChild : public OneCamera {
protected:
    /// What the child answers; the test hangs, and with it the program, when the child does.
    template <class Work>
    static int answer_of(const Work& work)
    {
        const pid_t child = fork();
        if (child == 0)
            work();
        int status = 0;
        EXPECT_EQ(child, waitpid(child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
        return WEXITSTATUS(status);
    }

    /// Whether frames still arrive here.
    void expect_frames()
    {
        FrameCheck check(camera);
        check.stream(20);
    }
};

INSTANTIATE_TEST_SUITE_P(, ForkedChild, both_modes, testing::PrintToStringParamName());

TEST_P(ForkedChild, ClosesTheLibraryWhileTheParentAcquires)
{
    camera.start_and_queue();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(0, answer_of([this] { _exit(gentl.GCCloseLib() == GC_ERR_SUCCESS ? 0 : 1); }));
    expect_frames();
}

TEST_P(ForkedChild, MayOpenTheLibraryItself)
{
    camera.start_and_queue();
    EXPECT_EQ(0, answer_of([this] {
                  gentl.GCCloseLib();
                  const bool is_open = gentl.GCInitLib() == GC_ERR_SUCCESS;
                  _exit(is_open && gentl.GCCloseLib() == GC_ERR_SUCCESS ? 0 : 1);
              }));
    expect_frames();
}

} // namespace
