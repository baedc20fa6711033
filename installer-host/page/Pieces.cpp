#include "installer-host/page/Pieces.h"

#include <algorithm>

#include "installer-host/report/Text.h"

namespace host::page {

namespace {

struct MoodLook {
    const char* sign;
    const char* name;
};

constexpr MoodLook MOODS[] = {{"\u2713", "good"}, {"\u2717", "bad"},     {"!", "attention"}, {"+", "added"},
                              {"~", "changed"},   {"\u2212", "removed"}, {">", "moved"},     {"\u00B7", "quiet"}};

Markup typeOf(const Json& value) {
    return element("span.type", value.at("type").get<std::string>());
}

/// What stands in an array or a dictionary.
Markup itemsOf(const Json& value) {
    const bool hasKeys = value.at("type") == "dictionary";
    std::vector<Markup> items;
    for (const auto& [key, item] : value.at("value").items()) {
        const Markup name = hasKeys ? element("bdi", inQuotes(key)) + " = " : Markup();
        items.push_back(name + typedValue(item));
    }
    return items.empty() ? Markup(" empty") : list("items", items);
}

std::string scalarText(const Json& value) {
    const Json& content = value.at("value");
    if (value.at("type") == "string") {
        return inQuotes(content.get_ref<const std::string&>());
    }
    if (value.at("type") == "data") {
        return "<" + content.get<std::string>() + ">";
    }
    return content.is_string() ? content.get<std::string>() : content.dump();
}

}  // namespace

Markup state(Mood mood, const std::string& word) {
    const MoodLook& look = MOODS[static_cast<int>(mood)];
    return element(std::string("span.state ") + look.name,
                   element("span.sign", {{"aria-hidden", "true"}}, look.sign) + " " + word);
}

Markup foreign(const std::string& text) {
    return element("bdi", escaped(text));
}

Markup path(const std::string& text) {
    const std::string plain = escaped(text);
    Markup pieces;
    for (std::size_t begin = 0; begin < plain.size();) {
        const std::size_t separator = plain.find_first_of("/.", begin);
        const std::size_t end = separator == std::string::npos ? plain.size() : separator + 1;
        pieces += plain.substr(begin, end - begin);
        pieces += element("wbr", {});
        begin = end;
    }
    return element("bdi.path", pieces);
}

Markup lines(const std::string& text) {
    Markup result;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        result += (begin == 0 ? Markup() : element("br", {})) + text.substr(begin, end - begin);
        begin = end + 1;
    }
    return element("bdi", result);
}

Markup typedValue(const Json& value) {
    if (value.is_null()) {
        return element("span.none", "not set");
    }
    if (value.at("value").is_structured()) {
        return typeOf(value) + itemsOf(value);
    }
    return element("bdi.value", scalarText(value)) + " " + typeOf(value);
}

Markup section(int level, const Markup& title, const Markup& content, const std::string& anchor) {
    const Attributes attributes = anchor.empty() ? Attributes{} : Attributes{{"id", anchor}};
    return element("section", attributes, element("h" + std::to_string(level), title) + content);
}

Markup disclosure(const Markup& summary, const Markup& content, bool isOpen) {
    const Attributes attributes = isOpen ? Attributes{{"open", ""}} : Attributes{};
    return element("details", attributes, element("summary", summary) + content);
}

Markup factList(const Facts& facts) {
    Markup content;
    for (const auto& [name, fact] : facts) {
        if (!fact.isEmpty()) {
            content += element("div", element("dt", name) + element("dd", fact));
        }
    }
    return element("dl.facts", content);
}

Markup list(const std::string& classes, const std::vector<Markup>& items) {
    Markup content;
    for (const Markup& item : items) {
        content += element("li", item);
    }
    return element("ul." + classes, {{"role", "list"}}, content);
}

// The roles say again what the elements are: some browsers forget it where a narrow page lays out cells as lines.

Table::Table(const char* caption, std::vector<std::string> titles) : caption_(caption), titles_(std::move(titles)) {}

void Table::add(const std::vector<Markup>& cells, const char* classes) {
    Markup row = element("th", {{"scope", "row"}, {"role", "rowheader"}}, cells.at(0));
    for (std::size_t column = 1; column < titles_.size(); ++column) {
        row += element("td", {{"role", "cell"}, {"data-title", titles_[column]}}, cells.at(column));
    }
    rows_ += element(std::string("tr.") + classes, {{"role", "row"}}, row);
}

Markup Table::markup(const std::string& classes) const {
    Markup head;
    for (const std::string& title : titles_) {
        head += element("th", {{"scope", "col"}, {"role", "columnheader"}}, title);
    }
    return element("table." + classes, {{"role", "table"}},
                   element("caption", caption_) +
                       element("thead", {{"role", "rowgroup"}}, element("tr", {{"role", "row"}}, head)) +
                       element("tbody", {{"role", "rowgroup"}}, rows_));
}

}  // namespace host::page
