#include "kelvo/platform/Terminal.h"

#include <unistd.h>

#include <cstdlib>

namespace kelvo::platform {

bool standardInputIsTerminal() { return ::isatty(STDIN_FILENO) == 1; }
bool standardOutputIsTerminal() { return ::isatty(STDOUT_FILENO) == 1; }
bool standardErrorIsTerminal() { return ::isatty(STDERR_FILENO) == 1; }
bool colourWanted(bool streamIsTerminal) { return streamIsTerminal && std::getenv("NO_COLOR") == nullptr; }

}  // namespace kelvo::platform
