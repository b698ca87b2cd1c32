#include "kelvo/KeyValueStore.h"

namespace kelvo {

KeyValueStore::~KeyValueStore() = default;

}  // namespace kelvo
