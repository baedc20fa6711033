// Texts of 1 MiB: their case and white space, searching, replacing, splitting and joining.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "CvBase/common/common_string.h"
#include "benchmarks/support/FloorText.h"
#include "benchmarks/support/Main.h"

#if CV_PEER_QT
#include <QByteArray>
#include <QByteArrayList>
#endif
#if CV_PEER_ABSEIL
#include <absl/strings/ascii.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#endif

namespace {

constexpr std::size_t MEBIBYTE = std::size_t{1} << 20;

/// 1 MiB and a few bytes of words of 1 to 10 letters in either case, with `separators[i]` between them, chosen at
/// random.
std::string makeWords(const std::vector<std::string>& separators) {
    std::mt19937 random(19990401);
    std::string words;
    while (words.size() < MEBIBYTE) {
        for (std::size_t letters = random() % 10 + 1; letters > 0; --letters) {
            words += static_cast<char>((random() % 8 == 0 ? 'A' : 'a') + static_cast<int>(random() % 26));
        }
        words += separators[random() % separators.size()];
    }
    return words;
}

/// One blank between most words, and two characters of white space in places, the last of which is a blank.
const std::string& words() {
    static const std::string made = makeWords({" ", " ", " ", " ", " ", " ", " ", "\n ", "  ", "\t "});
    return made;
}

/// 131072 fields of seven digits with commas between them.
const std::string& fields() {
    static const std::string made = [] {
        std::string text;
        for (unsigned int i = 0; i < MEBIBYTE / 8; ++i) {
            text += std::to_string(1000000 + i * 47 % 9000000) + ',';
        }
        text.pop_back();
        return text;
    }();
    return made;
}

std::string bytesOf(const String& text) {
    return {text.CStr(), text.Length()};
}
std::string bytesOf(const std::string& text) {
    return text;
}
std::string bytesOf(const bench::FloorText& text) {
    return text.Text();
}
#if CV_PEER_QT
std::string bytesOf(const QByteArray& text) {
    return text.toStdString();
}
#endif

/// The fields with commas between them.
template <typename Texts>
auto bytesOf(const Texts& texts) -> decltype(bytesOf(*texts.begin())) {
    std::string all;
    for (const auto& text : texts) {
        all += bytesOf(text) + ',';
    }
    all.pop_back();
    return all;
}

/// Adds a benchmark of `make`, which makes a text of one kind or another, or fields, with the bytes `wanted`.
template <typename Make>
void addMaking(const std::string& work, const std::string& name, Make make, const std::string& wanted) {
    bench::add("Text/" + work, {name, [make] { benchmark::DoNotOptimize(make()); },
                                [make, wanted] { return bytesOf(make()) == wanted; }});
}

template <typename Change>
std::string changed(std::string text, Change change) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [change](unsigned char c) { return static_cast<char>(change(c)); });
    return text;
}

void addCase() {
    const std::string upper = changed(words(), [](int c) { return std::toupper(c); });
    const std::string lower = changed(words(), [](int c) { return std::tolower(c); });
    const String text(words().c_str());
    addMaking(
        "to-upper-1-MiB", "CvBase", [text] { return text.ToUpper(); }, upper);
    addMaking(
        "to-lower-1-MiB", "CvBase", [text] { return text.ToLower(); }, lower);
#if CV_PEER_ABSEIL
    addMaking(
        "to-upper-1-MiB", "Abseil", [] { return absl::AsciiStrToUpper(words()); }, upper);
    addMaking(
        "to-lower-1-MiB", "Abseil", [] { return absl::AsciiStrToLower(words()); }, lower);
#endif
#if CV_PEER_QT
    const QByteArray bytes(words().c_str());
    addMaking(
        "to-upper-1-MiB", "QByteArray", [bytes] { return bytes.toUpper(); }, upper);
    addMaking(
        "to-lower-1-MiB", "QByteArray", [bytes] { return bytes.toLower(); }, lower);
#endif
}

void addSimplifying() {
    const std::string work = "simplify-1-MiB";
    const std::string wanted = [] {
        std::string simplified;
        for (const char c : words()) {
            if (std::isspace(static_cast<unsigned char>(c)) == 0) {
                simplified += c;
            } else if (simplified.back() != ' ') {
                simplified += ' ';
            }
        }
        simplified.pop_back();
        return simplified;
    }();
    addMaking(
        work, "CvBase", [text = String(words().c_str())] { return text.SimplifyWhiteSpace(); }, wanted);
#if CV_PEER_ABSEIL
    addMaking(
        work, "Abseil",
        [] {
            std::string text = words();
            absl::RemoveExtraAsciiWhitespace(&text);
            return text;
        },
        wanted);
#endif
#if CV_PEER_QT
    addMaking(
        work, "QByteArray", [bytes = QByteArray(words().c_str())] { return bytes.simplified(); }, wanted);
#endif
}

std::string replaceByHand(const std::string& text, std::string_view from, std::string_view to) {
    std::string replaced;
    std::size_t copied = 0;
    for (std::size_t at; (at = text.find(from, copied)) != std::string::npos; copied = at + from.size()) {
        replaced.append(text, copied, at - copied).append(to);
    }
    return replaced.append(text, copied);
}

void addReplacing(const std::string& work, const std::string& text, const char* from, const char* to) {
    const std::string wanted = replaceByHand(text, from, to);
    addMaking(
        work, "CvBase",
        [source = String(text.c_str()), from = String(from), to = String(to)] { return source.Replace(from, to); },
        wanted);
    addMaking(
        work, "std::string", [&text, from, to] { return replaceByHand(text, from, to); }, wanted);
#if CV_PEER_ABSEIL
    addMaking(
        work, "Abseil",
        [&text, from, to] {
            return absl::StrReplaceAll(text, {{from, to}});
        },
        wanted);
#endif
#if CV_PEER_QT
    addMaking(
        work, "QByteArray",
        [bytes = QByteArray(text.c_str()), from, to] {
            QByteArray replaced = bytes;
            return replaced.replace(from, to);
        },
        wanted);
#endif
}

template <typename Find>
void addFinding(const std::string& work, const std::string& name, const std::string& text, std::string_view needle,
                Find find) {
    bench::addAnswering(
        "Text/" + work, name, [find] { return static_cast<std::uint64_t>(find()); }, text.find(needle));
}

/// Searching a text in which `needle` does not occur.
void addFindings(const std::string& work, const std::string& text, const std::string& needle) {
    constexpr std::size_t NOWHERE = std::string::npos;
    const auto add = [&](const std::string& name, auto find) { addFinding(work, name, text, needle, find); };
    add("CvBase", [source = String(text.c_str()), needle] {
        const auto at = source.Find(needle.c_str());
        return at.IsSet() ? at.Value() : NOWHERE;
    });
    const auto where = [&text](const void* hit) {
        return hit != nullptr ? static_cast<std::size_t>(static_cast<const char*>(hit) - text.data()) : NOWHERE;
    };
    add("strstr", [=, &text] { return where(std::strstr(text.c_str(), needle.c_str())); });
    add("memmem", [=, &text] { return where(memmem(text.data(), text.size(), needle.data(), needle.size())); });
    add("std::string", [&text, needle] { return text.find(needle); });
#if CV_PEER_QT
    add("QByteArray", [bytes = QByteArray(text.c_str()), needle = QByteArray(needle.c_str())] {
        return static_cast<std::int64_t>(bytes.indexOf(needle));
    });
#endif
}

template <typename Field>
std::vector<Field> splitByHand(const std::string& text) {
    std::vector<Field> made;
    made.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), ',')) + 1);
    const std::string_view bytes = text;
    std::size_t start = 0;
    for (std::size_t end; (end = bytes.find(',', start)) != std::string_view::npos; start = end + 1) {
        made.emplace_back(bytes.substr(start, end - start));
    }
    made.emplace_back(bytes.substr(start));
    return made;
}

void addSplitting() {
    const std::string work = "split-131072-fields";
    addMaking(
        work, "CvBase",
        [text = String(fields().c_str())] {
            std::vector<String> made;
            text.Split(',', made);
            return made;
        },
        fields());
    addMaking(
        work, "floor", [] { return splitByHand<bench::FloorText>(fields()); }, fields());
    addMaking(
        work, "std::string", [] { return splitByHand<std::string>(fields()); }, fields());
#if CV_PEER_ABSEIL
    addMaking(
        work, "Abseil", [] { return std::vector<std::string>(absl::StrSplit(fields(), ',')); }, fields());
#endif
#if CV_PEER_QT
    addMaking(
        work, "QByteArray", [bytes = QByteArray(fields().c_str())] { return bytes.split(','); }, fields());
#endif
}

void addJoining() {
    const std::string work = "join-131072-fields";
    addMaking(
        work, "CvBase",
        [made =
             [] {
                 std::vector<String> split;
                 String(fields().c_str()).Split(',', split);
                 return split;
             }()] { return String::Join(",", made); },
        fields());
    const std::vector<std::string> parts = splitByHand<std::string>(fields());
    addMaking(
        work, "std::string",
        [parts] {
            std::size_t size = 0;
            for (const std::string& part : parts) {
                size += part.size() + 1;
            }
            std::string joined;
            joined.reserve(size);
            for (const std::string& part : parts) {
                joined.append(part).append(1, ',');
            }
            joined.pop_back();
            return joined;
        },
        fields());
#if CV_PEER_ABSEIL
    addMaking(
        work, "Abseil", [parts] { return absl::StrJoin(parts, ","); }, fields());
#endif
#if CV_PEER_QT
    addMaking(
        work, "QByteArray", [list = QByteArray(fields().c_str()).split(',')] { return list.join(','); }, fields());
#endif
}

[[maybe_unused]] const bool added = [] {
    addCase();
    addSimplifying();
    addReplacing("replace-in-30-places", words(), "xyz", "abc");
    addReplacing("replace-in-131071-places", fields(), ",", ";");
    addReplacing("replace-in-131071-places-growing", fields(), ",", " and ");
    static const std::string letters(MEBIBYTE, 'a');
    addFindings("find-in-equal-letters", letters, std::string(15, 'a') + 'b');
    static const std::string nearly = [] {
        std::string text;
        while (text.size() < MEBIBYTE) {
            text += "aaaaaaacaaaaaaab";
        }
        return text;
    }();
    addFindings("find-almost-there", nearly, "aaaaaaabaaaaaaab");
    addFindings("find-8-letters", words(), "reflects");
    addFindings("find-8-bytes", words(), "letters,");
    addSplitting();
    addJoining();
    return true;
}();

}  // namespace
