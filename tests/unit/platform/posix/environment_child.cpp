#include <cstdlib>
#include <iostream>

#include "platform/environment.h"
#include "platform/paths.h"

// Prints what the platform library knows of a variable and of the folders that variables name.

int main()
{
    const platform::EnvironmentCopy copy({"ZV_TEST"});
    std::cout << "value=" << platform::environment("ZV_TEST")
              << ", state=" << platform::user_state_folder().string() << ", current=" << copy.is_current()
              << std::endl;
    std::_Exit(EXIT_SUCCESS); // leaks cannot be looked for with the rights of another user
}
