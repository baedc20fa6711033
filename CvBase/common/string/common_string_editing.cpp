// Editing: pieces put in and taken out, case, white space, fields.

#include <algorithm>
#include <utility>

#include "CvBase/common/string/common_string_bytes.h"

namespace {

bool isWhiteSpace(char c) {
    return Char(c).IsWhiteSpace();
}

/// The view with `fold` applied to each byte.
template <typename Fold>
std::string folded(const String& text, Fold fold) {
    std::string bytes(text.CStr());
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), fold);
    return bytes;
}

}  // namespace

String& String::Insert(unsigned int pos, const String& s) {
    return *this = Left(pos) + s + Mid(pos);
}

String& String::Remove(unsigned int pos, const checked_value<unsigned int>& count) {
    const unsigned int n = count.ValueOr(Length());
    if (pos >= Length() || n == 0) {
        return *this;
    }
    const unsigned int end = pos + n;
    return *this = end >= Length() ? Left(pos) : Left(pos) + Right(Length() - end);
}

String String::ToUpper() const {
    if (IsEmpty()) {
        return *this;
    }
    std::string upper = folded(*this, [](char c) { return Char(c).ToUpper(); });
    return upper.empty() ? String() : fromBytes(std::move(upper));
}

String String::ToLower() const {
    if (IsEmpty()) {
        return IsNull() ? String() : String("");
    }
    std::string lower = folded(*this, [](char c) { return Char(c).ToLower(); });
    return lower.empty() ? String() : fromBytes(std::move(lower));
}

String String::StripWhiteSpace() const {
    const std::string_view bytes = bytesOf(*this);
    if (bytes.empty() || (!isWhiteSpace(bytes.front()) && !isWhiteSpace(bytes.back()))) {
        return *this;
    }
    const auto first = std::find_if_not(bytes.begin(), bytes.end(), isWhiteSpace);
    const auto last = std::find_if_not(bytes.rbegin(), std::make_reverse_iterator(first), isWhiteSpace).base();
    return fromBytes(std::string(first, last));
}

String String::SimplifyWhiteSpace() const {
    if (IsEmpty()) {
        return *this;
    }
    std::string simplified;
    simplified.reserve(Length());
    for (const char c : bytesOf(*this)) {
        if (!isWhiteSpace(c)) {
            simplified += c;
        } else if (!simplified.empty() && simplified.back() != ' ') {
            simplified += ' ';
        }
    }
    if (!simplified.empty() && simplified.back() == ' ') {
        simplified.pop_back();
    }
    if (simplified.size() < Length()) {
        blankCutSequence(simplified);
    }
    return fromBytes(std::move(simplified));
}

void String::Split(char separator, std::vector<String>& out) const {
    const String text(*this);  // this String may be one of those that clear() ends
    const std::string_view bytes = bytesOf(text);
    out.clear();
    const auto separators = std::count(bytes.begin(), bytes.end(), separator);
    if (separators == 0) {
        out.push_back(text);
        return;
    }
    out.reserve(static_cast<std::size_t>(separators) + 1);
    checked_value<unsigned int> hit = text.Find(separator);
    out.push_back(text.Left(hit.Value()));
    while (hit.IsSet()) {
        const unsigned int begin = hit.Value() + 1;
        hit = text.Find(separator, begin);
        out.push_back(hit.IsSet() ? text.Mid(begin, hit.Value() - begin) : text.Mid(begin));
    }
}

String String::Join(const String& separator, const std::vector<String>& parts) {
    const auto forEachPiece = [&](auto&& visit) {
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (i > 0 && !separator.IsEmpty()) {
                visit(separator);
            }
            if (!parts[i].IsEmpty()) {
                visit(parts[i]);
            }
        }
    };
    String first;
    std::size_t pieces = 0;
    std::size_t size = 0;
    forEachPiece([&](const String& piece) {
        if (pieces++ == 0) {
            first = piece;
        }
        size += piece.Length();
    });
    if (pieces < 2) {
        return first;
    }
    std::string joined;
    joined.reserve(size);
    forEachPiece([&](const String& piece) { joined += bytesOf(piece); });
    return fromBytes(std::move(joined));
}
