#include "installer-host/look/ValueBudget.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <variant>

namespace host {

namespace {

namespace plist = cv::plist;

// How much the host's memory grows at most, as measured with HTML reports: there a value stands in memory as part of a
// change, of a document and of its markup.
constexpr std::uint64_t BYTES_PER_VALUE = 2048;
constexpr std::uint64_t BYTES_PER_KEY = 3584;            ///< of the file: each is a change of its own
constexpr std::uint64_t BYTES_PER_LETTER_OF_PATH = 10;   ///< for each key
constexpr std::uint64_t BYTES_PER_LETTER = 16;           ///< of a text, where no report escapes it
constexpr std::uint64_t BYTES_PER_OTHER_CHARACTER = 88;  ///< for each byte of it
constexpr std::uint64_t DIGITS_PER_BYTE_OF_DATA = 2;
constexpr std::uint64_t BYTES_PER_LEVEL = 32;  ///< JSON indents the lines of a value for each value around it

bool isLetter(char c) {
    return c >= ' ' && c <= '~' && std::string_view("\"&'<>\\").find(c) == std::string_view::npos;
}

/// What a value takes, with all that it holds.
struct Cost {
    std::uint64_t depth;

    std::uint64_t of(const plist::Value& value) const {
        return BYTES_PER_VALUE + BYTES_PER_LEVEL * depth + std::visit(*this, value.content);
    }

    template <typename Scalar>
    std::uint64_t operator()(const Scalar& /*value*/) const {
        return 0;
    }

    std::uint64_t operator()(const std::string& text) const {
        const auto letters = static_cast<std::uint64_t>(std::count_if(text.begin(), text.end(), isLetter));
        return BYTES_PER_LETTER * letters + BYTES_PER_OTHER_CHARACTER * (text.size() - letters);
    }

    std::uint64_t operator()(const plist::Data& data) const {
        return BYTES_PER_LETTER * DIGITS_PER_BYTE_OF_DATA * data.bytes.size();
    }

    std::uint64_t operator()(const plist::Array& items) const {
        const Cost inner{depth + 1};
        return std::accumulate(items.begin(), items.end(), std::uint64_t{0},
                               [&](std::uint64_t sum, const plist::Value& item) { return sum + inner.of(item); });
    }

    std::uint64_t operator()(const plist::Dictionary& items) const {
        const Cost inner{depth + 1};
        return std::accumulate(items.begin(), items.end(), std::uint64_t{0}, [&](std::uint64_t sum, const auto& item) {
            return sum + (*this)(item.first) + inner.of(item.second);
        });
    }
};

}  // namespace

bool ValueBudget::spend(std::string_view path, const plist::Dictionary& keys) {
    const std::uint64_t perKey = BYTES_PER_KEY + BYTES_PER_LETTER_OF_PATH * path.size();
    const std::uint64_t cost = perKey * keys.size() + Cost{0}(keys);
    if (cost > left_) {
        return false;
    }
    left_ -= cost;
    return true;
}

}  // namespace host
