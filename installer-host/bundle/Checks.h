#pragma once

#include <functional>
#include <string>

#include "installer-host/Finding.h"

namespace host {

/// Looks at every part of a plug-in that a host relies on, and reports each finding as soon as it is made, since the
/// code may end the process. Goes as far as the bundle allows; never throws for a bad bundle.
void checkBundle(const std::string& path, const std::function<void(const Finding&)>& tell);

}  // namespace host
