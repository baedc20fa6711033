#pragma once

#include <string>

#include "platform/Descriptor.h"

namespace host {

/// The folder with all that is mounted in it, for reading only: not even the access time of a symbolic link changes
/// when it is read. `folder` is the open folder, `path` the absolute path at which it stands. The view lasts as long as
/// the descriptor is open. An invalid descriptor when the system lets this user have none.
cv::Descriptor readOnlyView(int folder, const std::string& path);

}  // namespace host
