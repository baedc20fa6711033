#pragma once

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

// What changed on the disk, kind by kind, and what is said of a disk in general. `level` is that of the heading.

/// What differs between the outcome and the expected one; empty when no outcome was expected.
Markup expectationSection(const Json& report, int level);

/// The keys of property lists, by file.
Markup preferenceSection(const Json& preferences, int level);

/// The Finder flags, before and after.
Markup finderSection(const Json& changes, int level);

/// Files, folders, links and special files.
Markup entrySection(const Json& entries, int level);

/// The Finder flags of an object, in digits and by name, or why there are none to tell.
Markup flagsText(const Json& object);

/// What could not be read, and why.
Markup unreadableText(const Json& unreadable);

}  // namespace host::page
