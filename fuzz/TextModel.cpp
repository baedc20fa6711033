#include "fuzz/TextModel.h"

#include <algorithm>
#include <utility>

namespace fuzz {

namespace {

bool isWhite(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\xA0';
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string mapped(std::string text, char (*mapping)(char)) {
    std::transform(text.begin(), text.end(), text.begin(), mapping);
    return text;
}

bool same(char a, char b, bool caseSensitive) {
    return caseSensitive ? a == b : lower(a) == lower(b);
}

/// How long a sequence says it is that begins with this byte: as many bytes as there are ones at its top.
unsigned int sequenceLength(char lead) {
    unsigned int length = 2;
    while (length < 7 && ((static_cast<unsigned char>(lead) >> (7 - length)) & 1) != 0) {
        ++length;
    }
    return length;
}

/// Whether the views of `from` and of as many bytes of the text are equal. `from` need not fit into the text when it is
/// longer than the whole, because the last place to look at is counted with 32 bits and wraps.
bool matches(const std::string& text, unsigned int at, const std::string& from) {
    const auto places = static_cast<unsigned int>(text.size() + 1 - from.size());
    return at < places && std::string(text.substr(at, from.size()).c_str()) == from.c_str();
}

}  // namespace

unsigned int TextModel::newCell() {
    static unsigned int last = 0;
    return ++last;
}

void TextModel::append(const TextModel& rhs) {
    if (!rhs.isEmpty()) {
        *this = isEmpty() ? rhs : TextModel(bytes() + rhs.bytes());
    }
}

void TextModel::resize(unsigned int length, bool keepUtf8Whole) {
    std::string text = bytes();
    text.resize(length);
    for (std::size_t i = text.size(); keepUtf8Whole && i-- > 0;) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) == 0xC0) {
            if (i + sequenceLength(text[i]) > length) {
                std::fill(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), '\0');
            }
            break;
        }
    }
    *this = TextModel(text);
}

void TextModel::truncate(unsigned int length) {
    if (this->length() > length) {
        resize(length, true);
    }
}

void TextModel::insert(unsigned int pos, const TextModel& s) {
    TextModel text = left(pos);
    text.append(s);
    text.append(mid(pos, {}));
    *this = text;
}

void TextModel::remove(unsigned int pos, const Position& count) {
    const unsigned int n = count.ValueOr(length());
    if (pos >= length() || n == 0) {
        return;
    }
    TextModel text = left(pos);
    if (pos + n < length()) {
        text.append(right(length() - (pos + n)));
    }
    *this = text;
}

TextModel::Position TextModel::find(char c, unsigned int start, bool caseSensitive) const {
    for (unsigned int i = start; i < length(); ++i) {
        if (same(bytes()[i], c, caseSensitive)) {
            return i;
        }
    }
    return {};
}

TextModel::Position TextModel::findRev(char c, const Position& start, bool caseSensitive) const {
    const unsigned int from = start.ValueOr(length() - 1);
    for (unsigned int i = from < length() ? from + 1 : 0; i-- > 0;) {
        if (same(bytes()[i], c, caseSensitive)) {
            return i;
        }
    }
    return {};
}

TextModel::Position TextModel::find(const std::string& needle, unsigned int start, bool caseSensitive) const {
    if (start >= length()) {
        return {};
    }
    const std::string text = caseSensitive ? bytes() : mapped(view(), lower);
    const std::string end = text.size() > start ? text.substr(start).c_str() : "";
    const std::size_t found = end.find(caseSensitive ? needle : mapped(needle, lower));
    // Folding drops what follows a NUL, and nothing is found there.
    const bool isFound = found != std::string::npos && start <= text.size();
    return isFound ? Position(start + static_cast<unsigned int>(found)) : Position();
}

bool TextModel::beginsWith(const TextModel& prefix, bool caseSensitive) const {
    const std::string begin = left(prefix.length()).view();
    return length() >= prefix.length() &&
           (caseSensitive ? begin == prefix.view() : mapped(begin, lower) == mapped(prefix.view(), lower));
}

bool TextModel::endsWith(const TextModel& suffix, bool caseSensitive) const {
    const std::string end = right(suffix.length()).view();
    return length() >= suffix.length() &&
           (caseSensitive ? end == suffix.view() : mapped(end, lower) == mapped(suffix.view(), lower));
}

TextModel TextModel::left(unsigned int n) const {
    return isNull() ? TextModel() : TextModel(bytes().substr(0, n));
}

TextModel TextModel::right(unsigned int n) const {
    return isNull() ? TextModel() : TextModel(bytes().substr(length() - std::min(n, length())));
}

TextModel TextModel::mid(unsigned int pos, const Position& count) const {
    return pos >= length() ? TextModel() : TextModel(bytes().substr(pos, count.ValueOr(length())));
}

TextModel TextModel::toUpper() const {
    return isEmpty() ? *this : view().empty() ? TextModel() : TextModel(mapped(view(), upper));
}

TextModel TextModel::toLower() const {
    return isNull() || (!isEmpty() && view().empty()) ? TextModel() : TextModel(mapped(view(), lower));
}

TextModel TextModel::stripWhiteSpace() const {
    std::string text = bytes();
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isWhite));
    text.erase(std::find_if_not(text.rbegin(), text.rend(), isWhite).base(), text.end());
    return text.size() == length() ? *this : TextModel(text);
}

TextModel TextModel::simplifyWhiteSpace() const {
    std::string text;
    for (const char c : bytes()) {
        const bool isInside = !text.empty() && text.back() != ' ';
        text += !isWhite(c) ? std::string(1, c) : isInside ? " " : "";
    }
    if (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    TextModel result(text);
    if (text.size() < bytes().size()) {
        result.resize(result.length(), true);
    }
    return isEmpty() ? *this : result;
}

std::vector<TextModel> TextModel::split(char separator) const {
    std::vector<TextModel> fields;
    unsigned int begin = 0;
    for (Position hit = find(separator, 0, true); hit.IsSet(); hit = find(separator, begin, true)) {
        fields.push_back(begin == 0 ? left(hit.Value()) : mid(begin, hit.Value() - begin));
        begin = hit.Value() + 1;
    }
    fields.push_back(begin == 0 ? *this : mid(begin, {}));
    return fields;
}

TextModel TextModel::join(const TextModel& separator, const std::vector<TextModel>& parts) {
    TextModel text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text.append(i > 0 ? separator : TextModel());
        text.append(parts[i]);
    }
    return text;
}

TextModel TextModel::replace(const TextModel& from, const TextModel& to) const {
    if (isEmpty()) {
        return isNull() ? TextModel() : TextModel("");
    }
    if (from.isEmpty()) {
        return *this;
    }
    const std::string text = bytes();
    std::string result;
    for (unsigned int i = 0; i < text.size();) {
        const bool isHit = matches(text, i, from.bytes());
        result += isHit ? to.bytes() : std::string(1, text[i]);
        i += isHit ? from.length() : 1;
    }
    return result.empty() ? TextModel() : TextModel(result);
}

TextModel TextModel::replaceChar(char from, char to) const {
    std::string result = view();
    for (std::size_t i = 0; i < bytes().size(); ++i) {
        if (bytes()[i] == from) {
            result.resize(std::max(result.size(), i + 1));
            result[i] = to;
        }
    }
    return TextModel(result);
}

TextModel TextModel::arg(const TextModel& value) const {
    Position best;
    const std::string text = bytes();
    for (unsigned int i = 0; i + 1 < text.size(); ++i) {
        const bool isPlaceholder = text[i] == '%' && text[i + 1] >= '0' && text[i + 1] <= '9';
        if (isPlaceholder && (!best.IsSet() || text[i + 1] < text[best.Value() + 1])) {
            best = i;
        }
    }
    TextModel result = best.IsSet() ? left(best.Value()) : *this;
    result.append(value);
    if (best.IsSet()) {
        result.append(mid(best.Value() + 2, {}));
    }
    return result;
}

}  // namespace fuzz
