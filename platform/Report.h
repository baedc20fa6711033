#pragma once

#include <initializer_list>
#include <string_view>

namespace cv {

/// Writes one line about a fault to standard error, "WHO: TEXT": `who` is the function or the service that was called.
/// Line breaks and other control characters in the text, which may come from file names, are shown as '?'. Takes no
/// memory, so that its lack can be reported, too.
void report(std::string_view who, std::string_view text) noexcept;

/// The same with a text in pieces.
void report(std::string_view who, std::initializer_list<std::string_view> pieces) noexcept;

}  // namespace cv
