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
const std::vector<T>& texts(bool floating) {
    const auto make = [](bool withPoint) {
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
    static const std::vector<T> integers = make(false);
    static const std::vector<T> floatings = make(true);
    return floating ? floatings : integers;
}

/// Adds up, in tenths, what `read` makes of the texts.
template <typename T, typename Read>
std::uint64_t sum(bool floating, Read read) {
    double total = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        for (const T& text : texts<T>(floating)) {
            total += static_cast<double>(read(text));
        }
    }
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(total * 10));
}

template <typename T, typename Read>
void addReading(const std::string& name, bool floating, Read read) {
    static const std::uint64_t wanted[] = {
        sum<std::string>(false, [](const std::string& text) { return std::stoi(text); }),
        sum<std::string>(true, [](const std::string& text) { return std::stod(text); })};
    addAnswering(
        floating ? "Parsing/ToDouble" : "Parsing/ToInt", name, [floating, read] { return sum<T>(floating, read); },
        wanted[floating]);
}

/// std::from_chars on the bytes of a String.
template <typename Number>
Number fromChars(const String& text) {
    Number value{};
    std::from_chars(text.CStr(), text.CStr() + text.Length(), value);
    return value;
}

// strtol, strtod and std::from_chars read the bytes of the same Strings; the others have texts of their own.
[[maybe_unused]] const bool added = [] {
    addReading<String>("CvBase", false, [](const String& text) { return text.ToInt(); });
    addReading<String>("strtol", false, [](const String& text) { return std::strtol(text.CStr(), nullptr, 10); });
    addReading<String>("from_chars", false, fromChars<int>);
    addReading<String>("CvBase", true, [](const String& text) { return text.ToDouble(); });
    addReading<String>("strtod", true, [](const String& text) { return std::strtod(text.CStr(), nullptr); });
    addReading<String>("from_chars", true, fromChars<double>);
#if CV_PEER_QT
    addReading<QByteArray>("QByteArray", false, [](const QByteArray& text) { return text.toInt(); });
    addReading<QByteArray>("QByteArray", true, [](const QByteArray& text) { return text.toDouble(); });
#endif
#if CV_PEER_ABSEIL
    addReading<std::string>("Abseil", false, [](const std::string& text) {
        int value = 0;
        (void)absl::SimpleAtoi(text, &value);
        return value;
    });
    addReading<std::string>("Abseil", true, [](const std::string& text) {
        double value = 0;
        (void)absl::SimpleAtod(text, &value);
        return value;
    });
#endif
    return true;
}();

}  // namespace
