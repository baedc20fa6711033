#pragma once

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

/// What the document of a `show` says of a disk.
Markup showSections(const Json& document);

/// What the document of a `show` says of the differences between two roots.
Markup diffSections(const Json& document);

/// The findings of a `check`.
Markup checkSections(const Json& document);

}  // namespace host::page
