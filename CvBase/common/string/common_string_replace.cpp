// Replacing texts and bytes.

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "CvBase/common/string/common_string_bytes.h"
#include "CvBase/common/string/common_string_finder.h"

using StringDetail::Finder;

namespace {

/// The positions before `end` at which the pattern begins, each at least `step` after the one before.
std::vector<unsigned int> positionsOf(Finder finder, std::size_t step, std::size_t end) {
    std::vector<unsigned int> positions;
    std::size_t begin = 0;
    for (std::size_t hit; begin < end && (hit = finder.find(begin)) < end; begin = hit + step) {
        positions.push_back(static_cast<unsigned int>(hit));
    }
    return positions;
}

/// `source` with `to` for the `length` bytes, or what there is of them, at each of the positions.
std::string replacedAt(std::string_view source, const std::vector<unsigned int>& positions, std::size_t length,
                       std::string_view to) {
    std::uint64_t size = source.size() + std::uint64_t{positions.size()} * to.size();
    for (const unsigned int position : positions) {
        size -= std::min(length, source.size() - position);
    }
    std::string replaced = nulBytes(size);
    char* end = replaced.data();
    std::size_t copied = 0;
    for (const unsigned int position : positions) {
        end = copyBytes(source.substr(copied, position - copied), end);
        end = copyBytes(to, end);
        copied = std::min(position + length, source.size());
    }
    copyBytes(source.substr(copied), end);
    return replaced;
}

}  // namespace

String String::Replace(const String& from, const String& to) const {
    if (IsEmpty()) {
        return IsNull() ? String() : String("");
    }
    if (from.IsEmpty()) {
        return *this;
    }
    // Of a `from` with a NUL, the bytes up to that NUL have to be there, or else the end of the text in its place.
    const std::string_view source = bytesOf(*this);
    const std::string_view pattern = bytesOf(from).substr(0, viewOf(bytesOf(from)).size() + 1);
    const unsigned int end = std::min(Length(), Length() + 1 - from.Length());  // wraps for a longer `from`
    const auto positions = positionsOf(Finder({source.data(), source.size() + 1}, pattern), from.Length(), end);
    std::string replaced = replacedAt(source, positions, from.Length(), bytesOf(to));
    return replaced.empty() ? String() : fromBytes(std::move(replaced));
}

String String::ReplaceChar(const Char& from, const Char& to) const {
    String replaced(CStr());
    const checked_value<unsigned int> last = FindRev(from);
    if (!last.IsSet()) {
        return replaced;
    }
    if (last.Value() >= replaced.Length()) {
        replaced.detachAndExtend(last.Value());
    }
    for (checked_value<unsigned int> hit = Find(from); hit.IsSet(); hit = Find(from, hit.Value() + 1)) {
        (*replaced.text_)[hit.Value()] = to;
    }
    return replaced;
}
