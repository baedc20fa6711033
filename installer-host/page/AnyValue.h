#pragma once

#include <set>
#include <string>

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

/// A value of which no other file here knows more, so that no page lacks what a document says: a list of
/// values, an object as names and values.
Markup anyValue(const Json& value);

/// The members of `object` but those named in `known`, as names and values; empty when there are no others.
Markup otherMembers(const Json& object, const std::set<std::string>& known);

/// The words in a member's name: "bundle identifier" for "bundleIdentifier".
std::string wordsOf(const std::string& name);

}  // namespace host::page
