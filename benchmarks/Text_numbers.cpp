// Numbers made into text, and templates filled.

#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "CvBase/common/common_string.h"
#include "benchmarks/support/FloorText.h"
#include "benchmarks/support/Main.h"

#if CV_PEER_QT
#include <QByteArray>
#include <QString>
#endif
#if CV_PEER_ABSEIL
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <absl/strings/substitute.h>
#endif
#if CV_PEER_FMT
#include <fmt/format.h>
#endif

namespace {

using bench::addAnswering;

constexpr int COUNT = 1000;

int integer(int i) {
    return i * 1237 - 400000;
}
double floating(int i) {
    return i * 12.37 - 4000.0;
}

/// The sum of the lengths of what `render` makes of the numbers `value(0)` to `value(COUNT - 1)`.
template <typename Value, typename Render>
std::uint64_t renderAll(Value value, Render render) {
    std::uint64_t total = 0;
    for (int i = 0; i < COUNT; ++i) {
        total += static_cast<std::uint64_t>(render(value(i)));
    }
    return total;
}

template <typename Render>
void addIntegers(const std::string& name, Render render) {
    const std::uint64_t wanted = renderAll(integer, [](int value) { return std::to_string(value).size(); });
    addAnswering(
        "Text/1000-integers-to-text", name, [render] { return renderAll(integer, render); }, wanted);
}

template <typename Render>
void addFloatings(const std::string& name, Render render) {
    const std::uint64_t wanted =
        renderAll(floating, [](double value) { return std::snprintf(nullptr, 0, "%.2f", value); });
    addAnswering(
        "Text/1000-doubles-to-text", name, [render] { return renderAll(floating, render); }, wanted);
}

/// A number made into text by the C++ library, whose loop is one of the fastest.
template <typename Number>
class Digits {
public:
    explicit Digits(Number value) : end_(std::to_chars(digits_, digits_ + sizeof digits_, value).ptr) {}
    [[nodiscard]] std::string_view Text() const { return {digits_, static_cast<std::size_t>(end_ - digits_)}; }

private:
    char digits_[24];
    const char* end_;
};

/// `pattern` with `value` in place of the lowest placeholder; there is one, and a digit follows each %.
bench::FloorText filled(const std::string& pattern, std::string_view value) {
    std::size_t found = pattern.find('%');
    for (std::size_t i = found; i < pattern.size() - 1; i = pattern.find('%', i + 1)) {
        if (pattern[i + 1] < pattern[found + 1]) {
            found = i;
        }
    }
    const std::size_t rest = found + 2;
    auto text = std::make_unique<std::string>(pattern.size() - 2 + value.size(), ' ');
    char* const bytes = text->data();
    std::memcpy(bytes, pattern.data(), found);
    std::memcpy(bytes + found, value.data(), value.size());
    std::memcpy(bytes + found + value.size(), pattern.data() + rest, pattern.size() - rest);
    return bench::FloorText(text.release());
}

template <typename Fill>
void addFilling(const std::string& name, Fill fill) {
    const std::uint64_t wanted = renderAll(
        integer, [](int value) { return std::snprintf(nullptr, 0, "%d of %s are in the folder", value, "the files"); });
    addAnswering(
        "Text/fill-1000-templates", name, [fill] { return renderAll(integer, fill); }, wanted);
}

/// Two numbers and two texts, as in a message about a file.
template <typename Fill>
void addFillingFour(const std::string& name, Fill fill) {
    const auto fillNumber = [fill](int value) { return fill(value, value / 7); };
    const std::uint64_t wanted = renderAll(integer, [](int value) {
        return std::snprintf(nullptr, 0, "read %d of %d bytes of %s in %s", value, value / 7, "notes.txt", "Documents");
    });
    addAnswering(
        "Text/fill-1000-templates-of-four", name, [fillNumber] { return renderAll(integer, fillNumber); }, wanted);
}

void addFillings() {
    addFilling("CvBase", [pattern = String("%1 of %2 are in the folder")](int value) {
        return pattern.Arg(value).Arg("the files").Length();
    });
    addFillingFour("CvBase", [pattern = String("read %1 of %2 bytes of %3 in %4")](int value, int size) {
        return pattern.Arg(value).Arg(size).Arg("notes.txt").Arg("Documents").Length();
    });
    addFillingFour("floor", [pattern = std::string("read %1 of %2 bytes of %3 in %4")](int value, int size) {
        const bench::FloorText first = filled(pattern, Digits(value).Text());
        const bench::FloorText second = filled(first.Text(), Digits(size).Text());
        const bench::FloorText third = filled(second.Text(), "notes.txt");
        return filled(third.Text(), "Documents").Text().size();
    });
#if CV_PEER_QT
    addFilling("QString", [pattern = QString("%1 of %2 are in the folder")](int value) {
        return pattern.arg(value).arg("the files").size();
    });
    addFillingFour("QString", [pattern = QString("read %1 of %2 bytes of %3 in %4")](int value, int size) {
        return pattern.arg(value).arg(size).arg("notes.txt").arg("Documents").size();
    });
#endif
#if CV_PEER_ABSEIL
    addFilling("Abseil",
               [](int value) { return absl::Substitute("$0 of $1 are in the folder", value, "the files").size(); });
    addFillingFour("Abseil", [](int value, int size) {
        return absl::Substitute("read $0 of $1 bytes of $2 in $3", value, size, "notes.txt", "Documents").size();
    });
#endif
#if CV_PEER_FMT
    addFilling("fmt", [](int value) { return fmt::format("{} of {} are in the folder", value, "the files").size(); });
    addFillingFour("fmt", [](int value, int size) {
        return fmt::format("read {} of {} bytes of {} in {}", value, size, "notes.txt", "Documents").size();
    });
#endif
}

[[maybe_unused]] const bool added = [] {
    addIntegers("CvBase", [](int value) { return String::Number(value).Length(); });
    addIntegers("floor", [](int value) { return bench::FloorText(Digits(value).Text()).Text().size(); });
    addIntegers("std::to_string", [](int value) { return std::to_string(value).size(); });
    addFloatings("CvBase", [](double value) { return String::Number(value, 2).Length(); });
    addFloatings("floor", [](double value) {
        char text[64];
        const int size = std::snprintf(text, sizeof text, "%.2f", value);
        return bench::FloorText(std::string_view(text, static_cast<std::size_t>(size))).Text().size();
    });
    addFloatings("snprintf", [](double value) {
        char text[64];
        return std::snprintf(text, sizeof text, "%.2f", value);
    });
#if CV_PEER_QT
    addIntegers("QByteArray", [](int value) { return QByteArray::number(value).size(); });
    addFloatings("QByteArray", [](double value) { return QByteArray::number(value, 'f', 2).size(); });
#endif
#if CV_PEER_ABSEIL
    addIntegers("Abseil", [](int value) { return absl::StrCat(value).size(); });
    addFloatings("Abseil", [](double value) { return absl::StrFormat("%.2f", value).size(); });
#endif
#if CV_PEER_FMT
    addIntegers("fmt", [](int value) { return fmt::to_string(value).size(); });
    addFloatings("fmt", [](double value) { return fmt::format("{:.2f}", value).size(); });
#endif
    addFillings();
    return true;
}();

}  // namespace
