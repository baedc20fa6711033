// The plain idea: look for the pattern's rarest byte with memchr, and compare the pattern there. Where that byte is not
// rare, look at whole blocks: a loop that the compiler makes into vector instructions sees whether the byte is anywhere
// in a block together with two others of the pattern. Where even these are found too often without the pattern, the
// two-way algorithm takes over, which is slower but never slow. In 1 MiB of words, an absent word takes a third of the
// time that strstr takes without AVX-512, and a tenth where one of its bytes is absent.

#include "CvBase/common/string/common_string_finder.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "CvBase/common/string/common_string_two_way.h"

namespace StringDetail {

namespace {

/// Fewer positions than these are searched in the plainest way, which is the fastest one then.
constexpr std::size_t FEW_POSITIONS = 128;

/// A candidate takes about as long as so many bytes take in the two-way algorithm.
constexpr std::size_t CANDIDATE_COST = 16;

/// The candidates may cost so much more than the two-way algorithm would have cost so far.
constexpr std::size_t PATIENCE = 1024;

/// How common each byte is in names, prose and code, roughly: 0 for those that are in none of them often.
constexpr auto COMMONNESS = [] {
    std::array<unsigned char, 256> ranks{};
    unsigned char rank = 0;
    for (const char c : std::string_view("~zqxjkvb/.,0123456789pygfwmucldrhsnioate ")) {
        ranks[static_cast<unsigned char>(c)] = ++rank;
    }
    for (std::size_t lead = 0xC0; lead < ranks.size(); ++lead) {
        ranks[lead] = rank;  // where one UTF-8 sequence is, there are more
    }
    return ranks;
}();

unsigned char commonness(char c) {
    return COMMONNESS[static_cast<unsigned char>(c)];
}

/// Where the pattern has its three rarest bytes, the rarest first. A pattern of two bytes has only two.
std::array<std::size_t, 3> rarestOf(std::string_view pattern) {
    std::array<std::size_t, 3> rarest{};
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        std::size_t place = std::min(i, rarest.size());
        for (; place > 0 && commonness(pattern[i]) < commonness(pattern[rarest[place - 1]]); --place) {
            if (place < rarest.size()) {
                rarest[place] = rarest[place - 1];
            }
        }
        if (place < rarest.size()) {
            rarest[place] = i;
        }
    }
    return rarest;
}

/// Three bytes of the pattern, and where in the text they would be if the pattern began at position 0.
struct Probes {
    const char* a;
    const char* b;
    const char* c;
    char wantedA;
    char wantedB;
    char wantedC;

    /// 0 where all three are in place for a pattern that begins at `position`.
    [[nodiscard]] unsigned char difference(std::size_t position) const {
        return static_cast<unsigned char>((a[position] ^ wantedA) | (b[position] ^ wantedB) | (c[position] ^ wantedC));
    }
};

/// Where the first block from `begin` on that has a candidate begins, or the rest at the end that is less than a block.
/// Looks for the least difference because both compilers make vector instructions of that.
std::size_t skipBlocks(Probes probes, std::size_t begin, std::size_t end) {
    for (; end - begin >= Finder::BLOCK; begin += Finder::BLOCK) {
        unsigned char least = 0xFF;
        for (std::size_t i = 0; i < Finder::BLOCK; ++i) {
            least = std::min(least, probes.difference(begin + i));
        }
        if (least == 0) {
            break;
        }
    }
    return begin;
}

}  // namespace

Finder::Finder(std::string_view text, std::string_view pattern)
    : text_(text), pattern_(pattern), positions_(pattern.size() > text.size() ? 0 : text.size() - pattern.size() + 1) {
    if (pattern.size() > 1 && positions_ >= FEW_POSITIONS) {  // else no candidates are looked for
        probes_ = rarestOf(pattern);
    }
}

std::size_t Finder::find(std::size_t start) {
    if (pattern_.size() == 1) {
        return text_.find(pattern_[0], start);
    }
    if (pattern_.empty() || start >= positions_ || positions_ - start < FEW_POSITIONS) {
        return text_.find(pattern_, start);
    }
    return findAmongCandidates(start);
}

std::size_t Finder::findAmongCandidates(std::size_t start) {
    std::size_t cost = 0;
    for (std::size_t at = nextCandidate(start); at != NOWHERE; at = nextCandidate(at + 1)) {
        const char* const here = text_.data() + at;
        if (std::memcmp(here, pattern_.data(), pattern_.size()) == 0) {
            return at;
        }
        // The byte that was wrong here is likely to be wrong at other candidates.
        const auto same = std::mismatch(pattern_.begin(), pattern_.end(), here).first - pattern_.begin();
        const auto wrong = static_cast<std::size_t>(same);
        if (wrong != probes_[1]) {
            probes_[2] = std::exchange(probes_[1], wrong);
        }
        cost += CANDIDATE_COST + wrong;
        if (cost > at - start + PATIENCE) {
            const std::size_t hit = findTwoWay(text_.substr(at + 1), pattern_);
            return hit == NOWHERE ? NOWHERE : at + 1 + hit;
        }
    }
    return NOWHERE;
}

std::size_t Finder::nextCandidate(std::size_t start) {
    for (;;) {
        if (start >= blockEnd_) {
            enterBlock(start);
        }
        start = std::max(start, blockBegin_);
        if (start >= positions_) {
            return NOWHERE;
        }
        const auto* const zero = static_cast<const unsigned char*>(
            std::memchr(differences_.data() + (start - blockBegin_), 0, blockEnd_ - start));
        if (zero != nullptr) {
            return blockBegin_ + static_cast<std::size_t>(zero - differences_.data());
        }
        start = blockEnd_;
    }
}

/// Makes the block at `start`, or the next one with a candidate, the current one; an empty one at the end if none has.
void Finder::enterBlock(std::size_t start) {
    const auto [a, b, c] = probes_;
    const char* const text = text_.data();
    const Probes probes{text + a, text + b, text + c, pattern_[a], pattern_[b], pattern_[c]};
    const auto* const rare =
        static_cast<const char*>(std::memchr(probes.a + start, probes.wantedA, positions_ - start));
    blockBegin_ = rare != nullptr ? static_cast<std::size_t>(rare - probes.a) : positions_;
    if (blockBegin_ - start < BLOCK) {
        blockBegin_ = skipBlocks(probes, blockBegin_, positions_);
    }
    blockEnd_ = std::min(blockBegin_ + BLOCK, positions_);
    for (std::size_t i = 0; i < blockEnd_ - blockBegin_; ++i) {
        differences_[i] = probes.difference(blockBegin_ + i);
    }
}

}  // namespace StringDetail
