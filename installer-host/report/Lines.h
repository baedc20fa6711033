#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The width that reports keep to, in characters.
constexpr std::size_t REPORT_WIDTH = 80;

/// One line of a report, made of pieces with a space between them. Where they do not fit the width, the line goes on
/// below, further in; only a piece that alone is too long for a line is cut.
class Line {
public:
    /// Begins `indent` characters from the left, and goes on `hanging` characters from the left.
    explicit Line(std::size_t indent, std::size_t hanging);
    /// Goes on four characters further in than it begins.
    explicit Line(std::size_t indent) : Line(indent, indent + 4) {}

    /// Adds a piece that stays together.
    Line& add(std::string_view piece);
    /// Adds a text that may be parted at its spaces.
    Line& addWords(std::string_view text);
    /// Adds to the last piece.
    Line& join(std::string_view more);

    /// The line, or lines, with a line feed at the end.
    std::string text() const;

private:
    std::size_t indent_, hanging_;
    std::vector<std::string> pieces_;
};

}  // namespace host
