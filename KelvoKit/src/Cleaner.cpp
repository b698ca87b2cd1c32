#include "kelvo/Cleaner.h"

namespace kelvo {

const ScanContext& ScanContext::standalone() {
    static const DirectorySizer sizer;
    static const ScanContext context{sizer, {}};
    return context;
}

}  // namespace kelvo
