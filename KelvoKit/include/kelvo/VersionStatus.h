#pragma once
// The minimum-version gate's answer: the running version may go on, or must be updated.
namespace kelvo {

enum class VersionStatus { ok, mustUpdate };

}  // namespace kelvo
