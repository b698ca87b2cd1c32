#include "kelvo/KelvoKit.h"

namespace kelvo {

std::string_view KelvoKit::version() { return KELVO_VERSION; }

}  // namespace kelvo
