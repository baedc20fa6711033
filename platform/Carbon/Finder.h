#pragma once

#include <chrono>
#include <optional>

#include "platform/Carbon/AppleEventData.h"

namespace cv {

/// Does what `event` asks the Finder for, as AESend promises, and waits for it at most `timeout` (none: for ever).
OSErr handleFinderEvent(const OpaqueAEDataStorage& event, std::optional<std::chrono::milliseconds> timeout);

}  // namespace cv
