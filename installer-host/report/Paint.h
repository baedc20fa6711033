#pragma once

#include <string>
#include <string_view>

namespace host {

/// What a piece of text tells, and so its colour on a terminal.
enum class Paint { Plain, Heading, Added, Changed, Removed, Moved, Good, Bad };

/// The text, which holds no line feed, between the codes (ECMA-48) that give it its colour.
std::string painted(std::string_view text, Paint paint);

/// A report of TextReport.h in colour: its headings, what it says of each change, and what went well or wrong.
std::string paintedReport(std::string_view report);

}  // namespace host
