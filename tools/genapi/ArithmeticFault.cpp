#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "genapi/NodeMap.h"

namespace zvgentl::tool {

namespace {

extern "C" void tell_and_end(int /*signal*/)
{
    // The fault interrupts nothing but the parser, so that the stream can be written to.
    std::fputs("zvgentl: a formula of the register description divides the smallest number by -1, which "
               "has no result; the description is faulty\n",
               stderr);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void end_on_arithmetic_fault() { std::signal(SIGFPE, &tell_and_end); }

} // namespace zvgentl::tool
