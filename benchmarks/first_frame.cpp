#include <cstdlib>
#include <exception>
#include <iostream>

#include "system/consumer/Camera.h"
#include "system/consumer/Library.h"

// A consumer that ends with its first frame. Settings and variables are those of the benchmark that starts
// it.

using namespace zvsystem;

int main()
try {
    const Producer producer{ZV_PRODUCER_FILE};
    const System system{producer.functions()};
    Camera camera{producer.functions(), system.open_interface("FG0"), "Device00"};
    camera.announce(4);
    camera.start_and_queue();
    camera.next();
    std::_Exit(EXIT_SUCCESS); // closing is not part of it
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
}
