#include <atomic>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <thread>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "support/process/process_state.h"
#include "system/consumer/Camera.h"
#include "system/consumer/Library.h"

// A consumer that ends its process while it acquires, in the way that its argument names: with exit code 0
// unless something goes wrong before. Settings and variables are those of the test that starts it.

using namespace GenTL;
using namespace zvsystem;
using namespace zvtest;

namespace {

/// What a careless application leaves behind when it ends: nothing is closed or destroyed.
struct Application {
    Producer producer{ZV_PRODUCER_FILE};
    System system{producer.functions()};
    Camera camera{producer.functions(), system.open_interface("FG0"), "Device00"};
};

/// A thread that waits in EventGetData for a frame that never comes.
void leave_a_waiter_behind(const Camera& camera)
{
    static std::atomic<pid_t> waiter{0};
    std::thread([&camera] {
        Filled filled{};
        waiter = this_thread();
        camera.get(filled, GENTL_INFINITE);
    }).detach();
    while (waiter == 0 || !is_asleep(waiter))
        std::this_thread::yield();
}

int end(const std::string& way)
{
    // Never destroyed, because threads may still use it while the process ends.
    static auto* const application = new Application;
    Camera& camera = application->camera;
    camera.announce(4, Memory::of_consumer);
    if (way == "waiter") {
        camera.start(); // and no buffer to fill
        leave_a_waiter_behind(camera);
        return EXIT_SUCCESS;
    }
    camera.start_and_queue();
    for (int i = 0; i < 10; ++i)
        camera.queue(camera.next().buffer);
    if (way == "return")
        return EXIT_SUCCESS;
    if (way == "exit")
        std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe): that is what is tested
    if (way == "exit_on_another_thread") {
        std::thread([] { std::exit(EXIT_SUCCESS); }).join(); // NOLINT(concurrency-mt-unsafe): as above
        return EXIT_FAILURE;
    }
    if (way == "quick_exit")
#ifdef _WIN32
        std::_Exit(EXIT_SUCCESS); // the same, without any handlers registered
#else
        std::quick_exit(EXIT_SUCCESS);
#endif
#ifndef _WIN32
    if (way ==
        "exit_of_a_child") { // which closes what it has from its parent, and runs all that runs at an exit
        const pid_t child = fork();
        if (child == 0) {
            application->producer.functions().GCCloseLib();
            std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe): as above
        }
        int status = 0;
        const bool has_ended = waitpid(child, &status, 0) == child && WIFEXITED(status);
        camera.queue(camera.next().buffer);
        return has_ended ? WEXITSTATUS(status) : EXIT_FAILURE;
    }
#endif
    std::cerr << "unknown way to end: " << way << '\n';
    return EXIT_FAILURE;
}

} // namespace

int main(int count, char** arguments)
try {
    if (count != 2) {
        std::cerr << "usage: " << arguments[0] << " WAY\n";
        return EXIT_FAILURE;
    }
    return end(arguments[1]);
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
}
