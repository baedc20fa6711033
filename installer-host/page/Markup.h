#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host::page {

/// A piece of a page in HTML. Text becomes markup by the constructors alone, which escape it: whoever wrote the text,
/// it cannot end an element or begin one.
class Markup {
public:
    Markup() = default;

    /// Text, in UTF-8. Control characters, those that turn the direction of writing, and bytes that are not UTF-8 are
    /// shown as "\x1b".
    Markup(const std::string& text);
    Markup(const char* text);

    /// Markup that is part of this program, as it is: a file that was embedded when the program was built.
    static Markup embedded(const char* markup);

    Markup& operator+=(const Markup& more);

    bool isEmpty() const { return html_.empty(); }
    const std::string& html() const { return html_; }

private:
    friend Markup element(std::string_view, const std::vector<std::pair<const char*, std::string>>&, const Markup&);

    std::string html_;
};

Markup operator+(Markup left, const Markup& right);

/// Names and values of attributes. Values are escaped; names are this program's own.
using Attributes = std::vector<std::pair<const char*, std::string>>;

/// `content` between the tags of an element. `name` may go on with a point and the element's classes: "p.lead quiet".
/// The elements br, meta and wbr have no content.
Markup element(std::string_view name, const Attributes& attributes, const Markup& content);
Markup element(std::string_view name, const Markup& content);

}  // namespace host::page
