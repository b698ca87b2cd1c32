#pragma once
// What the standard streams are connected to, for front ends that draw progress and colour
// only for a person at a terminal.
namespace kelvo::platform {

bool standardInputIsTerminal();
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();
// Colour is wanted on a terminal unless NO_COLOR is set (to anything).
bool colourWanted(bool streamIsTerminal);

}  // namespace kelvo::platform
