#pragma once
// What the standard streams of this process are connected to, for front ends that ask a
// question, draw progress or colour only for a person at a terminal.
namespace kelvo::Console {

bool inputIsTerminal();
bool errorIsTerminal();
// Standard output is a terminal and NO_COLOR is not set (to anything).
bool colourOnOutput();

}  // namespace kelvo::Console
