#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "CvBase/common/common_string.h"

namespace fuzz {

inline bool isWhite(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r') || c == '\xA0';
}

/// The text with its letters of ASCII in lower case.
inline std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

inline std::string untilNul(const std::string& text) {
    return text.c_str();
}

/// A String of all these bytes.
inline String stringOf(const std::string& bytes) {
    String text("");
    for (const char c : bytes) {
        text += c;
    }
    return text;
}

/// What a String should be, made in the plainest way: whether it is null, its bytes, and the number of the cell in
/// which the Strings that share its text are counted. Each operation is String's own of the same name.
struct TextModel {
    using Position = checked_value<unsigned int>;

    TextModel() = default;
    explicit TextModel(std::string text) : isNull(false), bytes(std::move(text)) {}

    [[nodiscard]] unsigned int length() const { return static_cast<unsigned int>(bytes.size()); }
    [[nodiscard]] std::string view() const { return untilNul(bytes); }

    TextModel& append(const TextModel& rhs) {
        if (!rhs.bytes.empty()) {
            *this = bytes.empty() ? rhs : TextModel(bytes + rhs.bytes);
        }
        return *this;
    }

    void resize(unsigned int newLength, bool keepUtf8Whole) {
        std::string text = bytes;
        text.resize(newLength);
        const auto isLead = [](char c) { return (c & 0xC0) == 0xC0; };
        const auto lead = std::find_if(text.rbegin(), text.rend(), isLead);
        if (keepUtf8Whole && lead != text.rend()) {
            std::ptrdiff_t promised = 2;  // as many bytes as there are ones at the top
            while (promised < 7 && ((*lead >> (7 - promised)) & 1) != 0) {
                ++promised;
            }
            if (promised > lead - text.rbegin() + 1) {
                std::fill(text.rbegin(), lead + 1, '\0');
            }
        }
        *this = TextModel(text);
    }

    void truncate(unsigned int most) {
        if (length() > most) {
            resize(most, true);
        }
    }

    void insert(unsigned int pos, const TextModel& s) { *this = left(pos).append(s).append(mid(pos, {})); }

    void remove(unsigned int pos, const Position& count) {
        const unsigned int n = count.ValueOr(length());
        if (pos < length() && n > 0) {
            const unsigned int end = pos + n;  // wraps
            *this = end < length() ? left(pos).append(right(length() - end)) : left(pos);
        }
    }

    [[nodiscard]] Position find(const std::string& needle, unsigned int start, bool caseSensitive) const {
        const std::string text = caseSensitive ? bytes : lowered(view());
        if (start >= length() || start > text.size()) {
            return {};
        }
        const auto found = untilNul(text.substr(start)).find(caseSensitive ? needle : lowered(needle));
        return found == std::string::npos ? Position() : start + static_cast<unsigned int>(found);
    }

    [[nodiscard]] Position find(char c, unsigned int start, bool caseSensitive) const {
        const auto found = (caseSensitive ? bytes : lowered(bytes)).find(fold(c, caseSensitive), start);
        return found == std::string::npos ? Position() : static_cast<unsigned int>(found);
    }

    [[nodiscard]] Position findRev(char c, const Position& start, bool caseSensitive) const {
        const unsigned int from = start.ValueOr(length() - 1);
        const auto found = (caseSensitive ? bytes : lowered(bytes)).rfind(fold(c, caseSensitive), from);
        return from >= length() || found == std::string::npos ? Position() : static_cast<unsigned int>(found);
    }

    /// What BeginsWith and EndsWith ask of the piece in question.
    [[nodiscard]] bool matches(const TextModel& piece, const TextModel& part, bool caseSensitive) const {
        return length() >= part.length() &&
               (caseSensitive ? piece.view() == part.view() : lowered(piece.view()) == lowered(part.view()));
    }

    [[nodiscard]] TextModel left(unsigned int n) const { return isNull ? TextModel() : TextModel(bytes.substr(0, n)); }
    [[nodiscard]] TextModel right(unsigned int n) const {
        return isNull ? TextModel() : TextModel(bytes.substr(length() - std::min(n, length())));
    }
    [[nodiscard]] TextModel mid(unsigned int pos, const Position& count) const {
        return pos >= length() ? TextModel() : TextModel(bytes.substr(pos, count.ValueOr(length())));
    }

    [[nodiscard]] TextModel toUpper() const {
        std::string text = view();
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        return bytes.empty() ? *this : text.empty() ? TextModel() : TextModel(text);
    }
    [[nodiscard]] TextModel toLower() const {
        return isNull || (!bytes.empty() && view().empty()) ? TextModel() : TextModel(lowered(view()));
    }

    [[nodiscard]] TextModel stripWhiteSpace() const {
        std::string text = bytes;
        text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isWhite));
        text.erase(std::find_if_not(text.rbegin(), text.rend(), isWhite).base(), text.end());
        return text.size() == bytes.size() ? *this : TextModel(text);
    }

    [[nodiscard]] TextModel simplifyWhiteSpace() const {
        std::string text;
        for (const char c : bytes) {
            const bool isInside = !text.empty() && text.back() != ' ';
            text += !isWhite(c) ? std::string(1, c) : isInside ? " " : "";
        }
        text.resize(text.size() - (!text.empty() && text.back() == ' ' ? 1 : 0));
        TextModel result(text);
        if (text.size() < bytes.size()) {
            result.resize(result.length(), true);
        }
        return bytes.empty() ? *this : result;
    }

    [[nodiscard]] std::vector<TextModel> split(char separator) const {
        std::vector<TextModel> fields;
        unsigned int begin = 0;
        for (Position hit = find(separator, 0, true); hit.IsSet(); hit = find(separator, begin, true)) {
            fields.push_back(begin == 0 ? left(hit.Value()) : mid(begin, hit.Value() - begin));
            begin = hit.Value() + 1;
        }
        fields.push_back(begin == 0 ? *this : mid(begin, {}));
        return fields;
    }

    /// `from` need not fit into the text when it is longer than the whole and holds a NUL, because the last place to
    /// look at is counted with 32 bits and wraps.
    [[nodiscard]] TextModel replace(const TextModel& from, const TextModel& to) const {
        if (bytes.empty() || from.bytes.empty()) {
            return !bytes.empty() ? *this : isNull ? TextModel() : TextModel("");
        }
        std::string result;
        for (unsigned int i = 0; i < length();) {
            const bool isHit =
                i < length() + 1 - from.length() && untilNul(bytes.substr(i, from.length())) == from.view();
            result += isHit ? to.bytes : std::string(1, bytes[i]);
            i += isHit ? from.length() : 1;
        }
        return result.empty() ? TextModel() : TextModel(result);
    }

    [[nodiscard]] TextModel replaceChar(char from, char to) const {
        std::string result = view();
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (bytes[i] == from) {
                result.resize(std::max(result.size(), i + 1));
                result[i] = to;
            }
        }
        return TextModel(result);
    }

    [[nodiscard]] TextModel arg(const TextModel& value) const {
        for (char digit = '0'; digit <= '9'; ++digit) {
            const std::size_t place = bytes.find(std::string("%") + digit);
            if (place != std::string::npos) {
                const auto at = static_cast<unsigned int>(place);
                return left(at).append(value).append(mid(at + 2, {}));
            }
        }
        return TextModel(*this).append(value);
    }

    bool isNull = true;
    std::string bytes;
    unsigned int cell = newCell();

private:
    static char fold(char c, bool caseSensitive) { return caseSensitive ? c : lowered({c})[0]; }

    static unsigned int newCell() {
        static unsigned int last = 0;
        return ++last;
    }
};

}  // namespace fuzz
