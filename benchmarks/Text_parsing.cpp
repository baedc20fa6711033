// A million short texts read as numbers: different ones, as many as the caches hold, over and over.

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "CvBase/common/common_string.h"
#include "benchmarks/support/Main.h"

#if CV_PEER_QT
#include <QByteArray>
#endif
#if CV_PEER_ABSEIL
#include <absl/strings/numbers.h>
#endif

namespace {

using bench::addAnswering;

constexpr int DIFFERENT = 4000;
constexpr int ROUNDS = 250;

/// DIFFERENT texts of up to ten bytes; the same ones for every T.
template <typename T>
std::vector<T> const& texts(bool floating) {
    auto const make = [](bool withPoint) {
        std::mt19937 random(20070612);
        std::vector<T> made;
        made.reserve(DIFFERENT);
        for (int i = 0; i < DIFFERENT; ++i) {
            std::string text = std::to_string(static_cast<int>(random() % 2000000) - 1000000);
            if (withPoint) {
                text += '.' + std::to_string(random() % 10);
            }
            made.push_back(T(text.c_str()));
        }
        return made;
    };
    static std::vector<T> const integers = make(false);
    static std::vector<T> const floatings = make(true);
    return floating ? floatings : integers;
}

/// Adds up, in tenths, what `read` makes of the texts.
template <typename T, typename Read>
std::uint64_t sum(bool floating, Read read) {
    double total = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        for (T const& text : texts<T>(floating)) {
            total += static_cast<double>(read(text));
        }
    }
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(total * 10));
}

template <typename T, typename Read>
void addReading(std::string const& name, bool floating, Read read) {
    static std::uint64_t const wanted[] = {
        sum<std::string>(false, [](std::string const& text) { return std::stoi(text); }),
        sum<std::string>(true, [](std::string const& text) { return std::stod(text); })};
    addAnswering(
        floating ? "Parsing/ToDouble" : "Parsing/ToInt", name, [floating, read] { return sum<T>(floating, read); },
        wanted[floating]);
}

/// std::from_chars on the bytes of a String.
template <typename Number>
Number fromChars(String const& text) {
    Number value{};
    std::from_chars(text.CStr(), text.CStr() + text.Length(), value);
    return value;
}

// strtol, strtod and std::from_chars read the bytes of the same Strings; the others have texts of their own.
[[maybe_unused]] bool const added = [] {
    addReading<String>("CvBase", false, [](String const& text) { return text.ToInt(); });
    addReading<String>("strtol", false, [](String const& text) { return std::strtol(text.CStr(), nullptr, 10); });
    addReading<String>("from_chars", false, fromChars<int>);
    addReading<String>("CvBase", true, [](String const& text) { return text.ToDouble(); });
    addReading<String>("strtod", true, [](String const& text) { return std::strtod(text.CStr(), nullptr); });
    addReading<String>("from_chars", true, fromChars<double>);
#if CV_PEER_QT
    addReading<QByteArray>("QByteArray", false, [](QByteArray const& text) { return text.toInt(); });
    addReading<QByteArray>("QByteArray", true, [](QByteArray const& text) { return text.toDouble(); });
#endif
#if CV_PEER_ABSEIL
    addReading<std::string>("Abseil", false, [](std::string const& text) {
        int value = 0;
        (void)absl::SimpleAtoi(text, &value);
        return value;
    });
    addReading<std::string>("Abseil", true, [](std::string const& text) {
        double value = 0;
        (void)absl::SimpleAtod(text, &value);
        return value;
    });
#endif
    return true;
}();

}  // namespace
