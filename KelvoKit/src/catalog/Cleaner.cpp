#include "kelvo/Cleaner.h"

#include <algorithm>
#include <utility>

namespace kelvo {

void ScanNotes::add(std::string note) {
    std::lock_guard lock(mutex_);
    if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(std::move(note));
}

std::vector<std::string> ScanNotes::take() {
    std::lock_guard lock(mutex_);
    return std::exchange(notes_, {});
}

const ScanContext& ScanContext::standalone() {
    static const DirectorySizer sizer;
    static const ScanContext context{sizer, {}};
    return context;
}

}  // namespace kelvo
