#include "kelvo/CleanTarget.h"

#include "kelvo/L10n.h"

namespace kelvo {

std::string CleanTarget::partialSizeNote() { return L10n::t("cleaner.note.partialSize"); }

std::string CleanTarget::unknownSizeNote() { return L10n::t("cleaner.note.unknownSize"); }

}  // namespace kelvo
