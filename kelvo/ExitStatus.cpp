#include "Commands.h"

namespace kelvo::tool {
namespace {
int status = 0;
}

void setExitStatus(int value) { status = value; }
int exitStatus() { return status; }

}  // namespace kelvo::tool
