#include "platform/terminal.h"

#include <unistd.h>

namespace platform {

bool is_terminal(std::FILE* stream) noexcept { return isatty(fileno(stream)) != 0; }

void keep_bytes(std::FILE* /*stream*/) noexcept {}

} // namespace platform
