#include "kelvo/Console.h"

#include "kelvo/platform/Terminal.h"

namespace kelvo {

bool Console::inputIsTerminal() { return platform::standardInputIsTerminal(); }
bool Console::errorIsTerminal() { return platform::standardErrorIsTerminal(); }
bool Console::colourOnOutput() { return platform::colourWanted(platform::standardOutputIsTerminal()); }

}  // namespace kelvo
