#include "zvgentl/CommandLine.h"

int main(int argc, char** argv) { return zvgentl::tool::run_program(argc, argv); }
