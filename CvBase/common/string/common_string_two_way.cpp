// The two-way algorithm of Crochemore and Perrin ("Two-way string-matching", Journal of the ACM 38, 1991).

#include "CvBase/common/string/common_string_two_way.h"

#include <algorithm>

namespace StringDetail {

namespace {

struct Suffix {
    std::size_t begin;
    std::size_t period;
};

/// The suffix of `pattern` that comes last in the order of bytes, or in the reverse order, and its period.
Suffix maximalSuffix(std::string_view pattern, bool reverse) {
    Suffix suffix{0, 1};
    std::size_t candidate = 1;
    for (std::size_t same = 0; candidate + same < pattern.size();) {
        const auto a = static_cast<unsigned char>(pattern[candidate + same]);
        const auto b = static_cast<unsigned char>(pattern[suffix.begin + same]);
        if (a == b) {
            ++same;
            if (same == suffix.period) {
                candidate += suffix.period;
                same = 0;
            }
        } else if ((a < b) != reverse) {
            candidate += same + 1;
            same = 0;
            suffix.period = candidate - suffix.begin;
        } else {
            suffix = {candidate, 1};
            ++candidate;
            same = 0;
        }
    }
    return suffix;
}

}  // namespace

std::size_t findTwoWay(std::string_view text, std::string_view pattern) {
    const Suffix forward = maximalSuffix(pattern, false);
    const Suffix backward = maximalSuffix(pattern, true);
    const Suffix right = forward.begin > backward.begin ? forward : backward;
    // Either this period is the whole pattern's, or no period of the pattern is shorter than the longer of its two
    // parts.
    const bool isPeriodic = pattern.compare(0, right.begin, pattern.substr(right.period, right.begin)) == 0;
    const std::size_t step = isPeriodic ? right.period : std::max(right.begin, pattern.size() - right.begin) + 1;
    std::size_t known = 0;  // so many bytes of the pattern are in place, as the step before has seen
    for (std::size_t at = 0; at + pattern.size() <= text.size();) {
        std::size_t i = std::max(right.begin, known);
        while (i < pattern.size() && pattern[i] == text[at + i]) {
            ++i;
        }
        if (i < pattern.size()) {
            at += i - right.begin + 1;
            known = 0;
            continue;
        }
        i = right.begin;
        while (i > known && pattern[i - 1] == text[at + i - 1]) {
            --i;
        }
        if (i <= known) {
            return at;
        }
        at += step;
        known = isPeriodic ? pattern.size() - step : 0;
    }
    return std::string_view::npos;
}

}  // namespace StringDetail
