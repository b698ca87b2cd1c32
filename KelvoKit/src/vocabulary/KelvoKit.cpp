#include "kelvo/KelvoKit.h"

namespace kelvo {

std::string_view KelvoKit::version() { return KELVO_VERSION; }

std::string_view KelvoKit::applicationID() { return "dev.kelvo.KelvoMenuBar"; }

}  // namespace kelvo
