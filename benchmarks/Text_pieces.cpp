// Copying, appending, searching, splitting, joining and replacing text.

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "CvBase/common/common_string.h"
#include "benchmarks/support/Main.h"

#if CV_PEER_QT
#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QVector>
#endif
#if CV_PEER_ABSEIL
#include <absl/strings/ascii.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#endif
#if CV_PEER_FMT
#include <fmt/format.h>
#endif

namespace {

using bench::addAnswering;

constexpr unsigned int FIELDS = 1000;
constexpr char SEPARATOR = ',';

std::string makeField(unsigned int i) {
    return "Field number " + std::to_string(i * 7919U);
}

/// FIELDS fields with commas between them, about 18 KB.
const std::string& line() {
    static const std::string made = [] {
        std::string text = makeField(0);
        for (unsigned int i = 1; i < FIELDS; ++i) {
            text += SEPARATOR + makeField(i);
        }
        return text;
    }();
    return made;
}

template <typename T>
std::vector<T> makeFields() {
    std::vector<T> fields;
    for (unsigned int i = 0; i < FIELDS; ++i) {
        fields.push_back(T(makeField(i).c_str()));
    }
    return fields;
}

std::size_t lengthOf(const String& text) {
    return text.Length();
}
std::size_t lengthOf(std::string_view text) {
    return text.size();
}
#if CV_PEER_QT
std::size_t lengthOf(const QByteArray& text) {
    return static_cast<std::size_t>(text.size());
}
std::size_t lengthOf(const QString& text) {
    return static_cast<std::size_t>(text.size());
}
#endif

template <typename Texts>
std::uint64_t totalLength(const Texts& texts) {
    std::uint64_t total = 0;
    for (const auto& text : texts) {
        total += lengthOf(text);
    }
    return total;
}

std::uint64_t fieldsLength() {
    return line().size() - (FIELDS - 1);
}

template <typename T>
void addCopying(const std::string& name) {
    addAnswering(
        "Text/copy-1000-texts", name, [fields = makeFields<T>()] { return totalLength(std::vector<T>(fields)); },
        fieldsLength());
}

template <typename T>
void addAppending(const std::string& name) {
    addAnswering(
        "Text/append-1000-pieces", name,
        [fields = makeFields<T>()] {
            T all = fields[0];
            for (unsigned int i = 1; i < FIELDS; ++i) {
                all += fields[i];
            }
            return lengthOf(all);
        },
        fieldsLength());
}

template <typename T, typename Find>
void addFinding(const std::string& work, const std::string& name, std::size_t wanted, Find find) {
    addAnswering(
        "Text/" + work, name, [text = T(line().c_str()), find] { return static_cast<std::uint64_t>(find(text)); },
        wanted);
}

void addFindings() {
    // The last field, and a byte that comes nowhere: the whole line is read.
    const std::string last = makeField(FIELDS - 1);
    const std::size_t at = line().size() - last.size();
    addFinding<String>("find-text", "CvBase", at,
                       [last](const String& text) { return text.Find(last.c_str()).Value(); });
    addFinding<std::string>("find-text", "std::string", at,
                            [last](const std::string& text) { return text.find(last); });
    addFinding<String>("find-byte", "CvBase", 0, [](const String& text) { return text.Find('~').IsSet(); });
    addFinding<std::string>("find-byte", "std::string", 0,
                            [](const std::string& text) { return text.find('~') != std::string::npos; });
#if CV_PEER_QT
    addFinding<QByteArray>("find-text", "QByteArray", at,
                           [last](const QByteArray& text) { return text.indexOf(last.c_str()); });
    addFinding<QByteArray>("find-byte", "QByteArray", 0, [](const QByteArray& text) { return text.contains('~'); });
    addFinding<QString>("find-text", "QString", at,
                        [needle = QString(last.c_str())](const QString& text) { return text.indexOf(needle); });
#endif
}

std::uint64_t splitByHand(const std::string& text) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(SEPARATOR, start)) != std::string::npos; start = end + 1) {
        fields.push_back(text.substr(start, end - start));
    }
    fields.push_back(text.substr(start));
    return totalLength(fields);
}

void addSplitting() {
    const std::string work = "Text/split-1000-fields";
    addAnswering(
        work, "CvBase",
        [text = String(line().c_str())] {
            std::vector<String> fields;
            text.Split(SEPARATOR, fields);
            return totalLength(fields);
        },
        fieldsLength());
    addAnswering(
        work, "std::string", [] { return splitByHand(line()); }, fieldsLength());
#if CV_PEER_QT
    addAnswering(
        work, "QByteArray", [text = QByteArray(line().c_str())] { return totalLength(text.split(SEPARATOR)); },
        fieldsLength());
#endif
#if CV_PEER_ABSEIL
    addAnswering(
        work, "Abseil",
        [] {
            const std::vector<std::string> fields = absl::StrSplit(line(), SEPARATOR);
            return totalLength(fields);
        },
        fieldsLength());
#endif
}

void addJoining() {
    const std::string work = "Text/join-1000-fields";
    addAnswering(
        work, "CvBase", [fields = makeFields<String>()] { return String::Join(",", fields).Length(); }, line().size());
#if CV_PEER_QT
    const auto made = makeFields<QByteArray>();
    addAnswering(
        work, "QByteArray", [fields = QByteArrayList(made.begin(), made.end())] { return lengthOf(fields.join(',')); },
        line().size());
#endif
#if CV_PEER_ABSEIL
    addAnswering(
        work, "Abseil", [fields = makeFields<std::string>()] { return absl::StrJoin(fields, ",").size(); },
        line().size());
#endif
#if CV_PEER_FMT
    addAnswering(
        work, "fmt", [fields = makeFields<std::string>()] { return fmt::format("{}", fmt::join(fields, ",")).size(); },
        line().size());
#endif
}

std::uint64_t replaceByHand(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text.size();
}

void addReplacing() {
    const std::string work = "Text/replace-1000-places";
    const std::size_t wanted = line().size() - FIELDS * 2;  // "number" becomes "no. "
    addAnswering(
        work, "CvBase", [text = String(line().c_str())] { return text.Replace("number", "no. ").Length(); }, wanted);
    addAnswering(
        work, "std::string", [] { return replaceByHand(line(), "number", "no. "); }, wanted);
#if CV_PEER_QT
    addAnswering(
        work, "QByteArray",
        [text = QByteArray(line().c_str())] {
            QByteArray changed = text;
            return lengthOf(changed.replace("number", "no. "));
        },
        wanted);
#endif
#if CV_PEER_ABSEIL
    addAnswering(
        work, "Abseil",
        [] {
            return absl::StrReplaceAll(line(), {{"number", "no. "}}).size();
        },
        wanted);
#endif
}

void addUpperCase() {
    const std::string work = "Text/to-upper-18-KB";
    addAnswering(
        work, "CvBase", [text = String(line().c_str())] { return text.ToUpper().BeginsWith("FIELD NUMBER 0"); }, 1);
    addAnswering(
        work, "std::string",
        [] {
            std::string text = line();
            std::transform(text.begin(), text.end(), text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            return text.compare(0, 5, "FIELD") == 0;
        },
        1);
#if CV_PEER_QT
    addAnswering(
        work, "QByteArray", [text = QByteArray(line().c_str())] { return text.toUpper().startsWith("FIELD"); }, 1);
#endif
#if CV_PEER_ABSEIL
    addAnswering(
        work, "Abseil", [] { return absl::AsciiStrToUpper(line()).compare(0, 5, "FIELD") == 0; }, 1);
#endif
}

[[maybe_unused]] const bool added = [] {
    addCopying<String>("CvBase");
    addCopying<std::string>("std::string");
    addAppending<String>("CvBase");
    addAppending<std::string>("std::string");
#if CV_PEER_QT
    addCopying<QByteArray>("QByteArray");
    addCopying<QString>("QString");
    addAppending<QByteArray>("QByteArray");
    addAppending<QString>("QString");
#endif
    addFindings();
    addSplitting();
    addJoining();
    addReplacing();
    addUpperCase();
    return true;
}();

}  // namespace
