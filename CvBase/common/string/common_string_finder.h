#pragma once

// What the sources of String share; no other file includes this.

#include <array>
#include <cstddef>
#include <string_view>

namespace StringDetail {

/// Finds a pattern in a text, both of any bytes, from left to right. Finding all places takes time that grows with the
/// length of the text, whatever text and pattern hold. Both must outlive the finder.
class Finder {
public:
    static constexpr std::size_t NOWHERE = std::string_view::npos;

    /// So many positions are looked at together.
    static constexpr std::size_t BLOCK = 256;

    Finder(std::string_view text, std::string_view pattern);

    /// The first position from `start` on where the pattern begins, or NOWHERE. An empty pattern begins everywhere, at
    /// the end of the text, too. `start` must not be less than at the call before.
    [[nodiscard]] std::size_t find(std::size_t start);

private:
    [[nodiscard]] std::size_t findAmongCandidates(std::size_t start);
    [[nodiscard]] std::size_t nextCandidate(std::size_t start);
    void enterBlock(std::size_t start);

    std::string_view text_;
    std::string_view pattern_;
    /// The number of positions where the pattern could begin: none when it is longer than the text.
    std::size_t positions_;
    /// Where the pattern has its rarest byte, and two others. A candidate is a position from which these three bytes
    /// are in place.
    std::array<std::size_t, 3> probes_{};
    /// The positions from blockBegin_ to blockEnd_ that are candidates have a 0 here.
    std::size_t blockBegin_ = 0;
    std::size_t blockEnd_ = 0;
    std::array<unsigned char, BLOCK> differences_;
};

}  // namespace StringDetail
