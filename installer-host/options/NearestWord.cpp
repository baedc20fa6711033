#include "installer-host/options/NearestWord.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>

namespace host {

namespace {

/// How many letters must be put in, left out or exchanged to make one word of the other; two that changed places count
/// as one.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> beforeLast, last, row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 1; i <= from.size(); ++i) {
        beforeLast = std::move(last);
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t other = from[i - 1] == to[j - 1] ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + other});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace

std::string nearestWord(const std::string& word, const std::vector<std::string>& known) {
    constexpr std::size_t LONGEST = 40;  // far from every word, and not worth the time
    std::string nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const std::string& candidate : known) {
        const bool begins = word.size() > 2 && candidate.compare(0, word.size(), word) == 0;
        const std::size_t letters = word.size() > LONGEST ? LONGEST : distance(word, candidate);
        const std::size_t rank = begins ? 0 : letters;
        if (rank < least && (begins || letters <= std::max<std::size_t>(1, candidate.size() / 3))) {
            nearest = candidate;
            least = rank;
        }
    }
    return nearest;
}

}  // namespace host
