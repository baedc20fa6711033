#pragma once

#include <functional>
#include <string>
#include <vector>

#include "installer-host/look/RootFolder.h"
#include "installer-host/look/Tree.h"

namespace host {

/// Looks at all that lies in and below the folders of `scope`, as seen from inside the root; a folder that is missing
/// is not in the tree. By descriptor, never through a link, with a handful of descriptors however deep the tree is; the
/// working folder is another one meanwhile. Attributes, the targets of links and the bytes of property lists are read
/// where `before`, an earlier look at the same scope, does not know them: an entry whose status did not change since
/// is not read again. Contents of other files are never read.
///
/// A look without `before` returns when the clock of the disk has gone on, so that each later change has a later time.
/// What cannot be looked at is described in the tree. `perFolder` is called now and then; what it throws ends the look.
Tree lookAt(
    const RootFolder& root, const std::vector<std::string>& scope, const Tree* before = nullptr,
    const std::function<void()>& perFolder = [] {});

}  // namespace host
