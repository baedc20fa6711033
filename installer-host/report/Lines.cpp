#include "installer-host/report/Lines.h"

#include <algorithm>

namespace host {

namespace {

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// The number of characters in a text in UTF-8.
std::size_t widthOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
}

/// The bytes that the first `count` characters take.
std::size_t bytesOf(std::string_view text, std::size_t count) {
    std::size_t bytes = 0;
    while (bytes < text.size() && (count > 0 || !beginsCharacter(text[bytes]))) {
        count -= beginsCharacter(text[bytes]) ? 1U : 0U;
        ++bytes;
    }
    return bytes;
}

/// Whether the text fits after `used` characters of a line. Looks at no more of it than that: it may hold megabytes.
bool fits(std::string_view text, std::size_t used) {
    return used <= REPORT_WIDTH && bytesOf(text, REPORT_WIDTH - used) == text.size();
}

}  // namespace

Line::Line(std::size_t indent, std::size_t hanging) : indent_(indent), hanging_(hanging) {}

Line& Line::add(std::string_view piece) {
    pieces_.emplace_back(piece);
    return *this;
}

Line& Line::addWords(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        pieces_.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return *this;
}

Line& Line::join(std::string_view more) {
    pieces_.back() += more;
    return *this;
}

std::string Line::text() const {
    std::string text(indent_, ' ');
    std::size_t width = indent_;
    bool isFirst = true;
    const auto breakLine = [&] {
        text += "\n" + std::string(hanging_, ' ');
        width = hanging_;
        isFirst = true;
    };
    for (std::string_view piece : pieces_) {
        const std::size_t room = isFirst ? 0 : 1;
        if (!isFirst && !fits(piece, width + room)) {
            breakLine();
        }
        text += isFirst ? "" : " ";
        width += isFirst ? 0 : 1;
        while (!fits(piece, width)) {
            const std::size_t bytes = bytesOf(piece, REPORT_WIDTH - width);
            text += piece.substr(0, bytes);
            piece.remove_prefix(bytes);
            breakLine();
        }
        text += piece;
        width += widthOf(piece);
        isFirst = false;
    }
    return text + "\n";
}

}  // namespace host
