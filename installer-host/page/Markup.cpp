#include "installer-host/page/Markup.h"

#include "installer-host/report/Text.h"

namespace host::page {

namespace {

/// Fit to stand between tags, and in an attribute's value between double quotes.
std::string escapedForHtml(const std::string& text) {
    std::string result;
    for (const char byte : visible(text)) {
        switch (byte) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += byte;
        }
    }
    return result;
}

bool hasNoContent(std::string_view name) {
    return name == "br" || name == "meta" || name == "wbr";
}

}  // namespace

Markup::Markup(const std::string& text) : html_(escapedForHtml(text)) {}

Markup::Markup(const char* text) : Markup(std::string(text)) {}

Markup Markup::embedded(const char* markup) {
    Markup result;
    result.html_ = markup;
    return result;
}

Markup& Markup::operator+=(const Markup& more) {
    html_ += more.html_;
    return *this;
}

Markup operator+(Markup left, const Markup& right) {
    return left += right;
}

Markup element(std::string_view name, const Attributes& attributes, const Markup& content) {
    const std::size_t point = name.find('.');
    const std::string tag(name.substr(0, point));
    Markup result;
    result.html_ = "<" + tag;
    if (point != std::string_view::npos) {
        result.html_ += " class=\"" + std::string(name.substr(point + 1)) + "\"";
    }
    for (const auto& [key, value] : attributes) {
        result.html_ += std::string(" ") + key + "=\"" + escapedForHtml(value) + "\"";
    }
    result.html_ += ">";
    if (!hasNoContent(tag)) {
        result.html_ += content.html_ + "</" + tag + ">";
    }
    return result;
}

Markup element(std::string_view name, const Markup& content) {
    return element(name, {}, content);
}

}  // namespace host::page
