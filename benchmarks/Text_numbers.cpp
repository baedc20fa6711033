// Numbers made into text, and templates filled.

#include <cstdio>
#include <string>
#include <vector>

#include "CvBase/common/common_string.h"
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

template <typename Fill>
void addFilling(const std::string& name, Fill fill) {
    const std::uint64_t wanted = renderAll(
        integer, [](int value) { return std::snprintf(nullptr, 0, "%d of %s are in the folder", value, "the files"); });
    addAnswering(
        "Text/fill-1000-templates", name, [fill] { return renderAll(integer, fill); }, wanted);
}

[[maybe_unused]] const bool added = [] {
    addIntegers("CvBase", [](int value) { return String::Number(value).Length(); });
    addIntegers("std::to_string", [](int value) { return std::to_string(value).size(); });
    addFloatings("CvBase", [](double value) { return String::Number(value, 2).Length(); });
    addFloatings("snprintf", [](double value) {
        char text[64];
        return std::snprintf(text, sizeof text, "%.2f", value);
    });
    addFilling("CvBase", [pattern = String("%1 of %2 are in the folder")](int value) {
        return pattern.Arg(value).Arg("the files").Length();
    });
#if CV_PEER_QT
    addIntegers("QByteArray", [](int value) { return QByteArray::number(value).size(); });
    addFloatings("QByteArray", [](double value) { return QByteArray::number(value, 'f', 2).size(); });
    addFilling("QString", [pattern = QString("%1 of %2 are in the folder")](int value) {
        return pattern.arg(value).arg("the files").size();
    });
#endif
#if CV_PEER_ABSEIL
    addIntegers("Abseil", [](int value) { return absl::StrCat(value).size(); });
    addFloatings("Abseil", [](double value) { return absl::StrFormat("%.2f", value).size(); });
    addFilling("Abseil",
               [](int value) { return absl::Substitute("$0 of $1 are in the folder", value, "the files").size(); });
#endif
#if CV_PEER_FMT
    addIntegers("fmt", [](int value) { return fmt::to_string(value).size(); });
    addFloatings("fmt", [](double value) { return fmt::format("{:.2f}", value).size(); });
    addFilling("fmt", [](int value) { return fmt::format("{} of {} are in the folder", value, "the files").size(); });
#endif
    return true;
}();

}  // namespace
