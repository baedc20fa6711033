// Searching and taking pieces.

#include <algorithm>
#include <cstring>

#include "CvBase/common/string/common_string_bytes.h"
#include "CvBase/common/string/common_string_finder.h"

using StringDetail::Finder;

namespace {

/// Up to about this length strstr is faster than a Finder, and has no time to become slow.
constexpr unsigned int SHORT_TEXT = 256;

bool sameByte(char a, char b) {
    return a == b;
}

bool sameByteFolded(char a, char b) {
    return Char(a).ToLower() == Char(b).ToLower();
}

/// Whether the bytes and the text are equal, as far as their first NUL bytes.
bool equalViews(std::string_view bytes, const String& text, bool caseSensitive) {
    const std::string_view a = viewOf(bytes);
    const std::string_view b = viewOf(bytesOf(text));
    return caseSensitive ? a == b : std::equal(a.begin(), a.end(), b.begin(), b.end(), sameByteFolded);
}

/// The position `hit` in the text, unless it is Finder::NOWHERE or a NUL byte lies between `start` and it.
checked_value<unsigned int> positionIn(const String& text, unsigned int start, std::size_t hit) {
    if (hit == Finder::NOWHERE || std::memchr(text.CStr() + start, '\0', hit - start) != nullptr) {
        return {};
    }
    return static_cast<unsigned int>(hit);
}

}  // namespace

checked_value<unsigned int> String::Find(char c, unsigned int start, bool caseSensitive) const {
    if (start >= Length()) {
        return {};
    }
    const std::string_view bytes = bytesOf(*this);
    if (caseSensitive) {
        const void* const hit = std::memchr(bytes.data() + start, c, bytes.size() - start);
        return hit != nullptr ? checked_value<unsigned int>(
                                    static_cast<unsigned int>(static_cast<const char*>(hit) - bytes.data()))
                              : checked_value<unsigned int>();
    }
    for (unsigned int i = start; i < bytes.size(); ++i) {
        if (sameByteFolded(bytes[i], c)) {
            return i;
        }
    }
    return {};
}

checked_value<unsigned int> String::FindRev(char c, const checked_value<unsigned int>& start,
                                            bool caseSensitive) const {
    const std::string_view bytes = bytesOf(*this);
    if (bytes.empty() || start.ValueOr(0) >= bytes.size()) {
        return {};
    }
    const auto same = caseSensitive ? sameByte : sameByteFolded;
    for (std::size_t end = start.ValueOr(Length() - 1) + std::size_t{1}; end > 0; --end) {
        if (same(bytes[end - 1], c)) {
            return static_cast<unsigned int>(end - 1);
        }
    }
    return {};
}

checked_value<unsigned int> String::Find(const char* needle, unsigned int start, bool caseSensitive) const {
    if (start >= Length()) {
        return {};
    }
    if (caseSensitive && Length() - start < SHORT_TEXT) {
        const char* const hit = std::strstr(CStr() + start, needle);
        return hit != nullptr ? checked_value<unsigned int>(static_cast<unsigned int>(hit - CStr()))
                              : checked_value<unsigned int>();
    }
    if (caseSensitive) {
        return positionIn(*this, start, Finder(bytesOf(*this), needle).find(start));
    }
    // Folding drops what follows a NUL byte, so the folded text may end before `start`; nothing is found then.
    const String folded = ToLower();
    const String foldedNeedle = String(needle).ToLower();
    return positionIn(folded, start, Finder(bytesOf(folded), bytesOf(foldedNeedle)).find(start));
}

bool String::BeginsWith(const String& prefix, bool caseSensitive) const {
    return Length() >= prefix.Length() && equalViews(bytesOf(*this).substr(0, prefix.Length()), prefix, caseSensitive);
}

bool String::EndsWith(const String& suffix, bool caseSensitive) const {
    return Length() >= suffix.Length() &&
           equalViews(bytesOf(*this).substr(Length() - suffix.Length()), suffix, caseSensitive);
}

String String::Left(unsigned int n) const {
    return IsNull() ? String() : fromBytes(std::string(bytesOf(*this).substr(0, n)));
}

String String::Right(unsigned int n) const {
    return IsNull() ? String() : fromBytes(std::string(bytesOf(*this).substr(Length() - std::min(n, Length()))));
}

String String::Mid(unsigned int pos, const checked_value<unsigned int>& count) const {
    return pos >= Length() ? String() : fromBytes(std::string(bytesOf(*this).substr(pos, count.ValueOr(Length()))));
}
