// Files that command lines name, with anything in them: a journal, an expectation, a list of cases, the report of a
// matrix. Each is taken, or refused with a reason; what is taken is the same after it was written and read again.

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"
#include "installer-host/expect/Difference.h"
#include "installer-host/expect/Expectation.h"
#include "installer-host/expect/ExpectationFile.h"
#include "installer-host/journal/Journal.h"
#include "installer-host/matrix/CaseList.h"
#include "installer-host/matrix/CasesFile.h"
#include "tests/support/TempDir.h"

namespace {

using namespace host;

/// The path of a file that holds the text.
std::string fileOf(const std::string& text) {
    static const test::TempDir FOLDER;
    const std::string path = FOLDER / "file";
    test::writeFile(path, text);
    return path;
}

/// What the reader makes of the text; nothing when it refuses it, which it has to give a reason for.
template <typename Reader>
auto readBy(const Reader& read, const std::string& text) -> std::optional<decltype(read(text))> {
    try {
        return read(text);
    } catch (const Failure& failure) {
        fuzz::expect("a reason", !std::string(failure.what()).empty());
        return std::nullopt;
    }
}

std::optional<Journal> journalOf(const std::string& text) {
    try {
        return journalFrom(text);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void checkJournal(const std::string& text) {
    if (const auto journal = journalOf(text)) {
        const std::string told = journalText(*journal);
        const auto again = journalOf(told);
        fuzz::expect("a journal that is told again is one", again.has_value());
        fuzz::expectEqual("a journal that is told again", journalText(*again), told);
    }
}

Expectation expectationOf(const std::string& text) {
    return Expectation::read(fileOf(text));
}

void checkExpectation(const std::string& text) {
    const auto expectation = readBy(expectationOf, text);
    const auto facts = expectation ? expectation->of("5100/0/on") : std::nullopt;
    if (!facts) {
        return;
    }
    for (const Difference& difference : compare(*facts, expectation->isComplete(), {})) {
        fuzz::expect("a difference in words", !describe(difference).empty());
        fuzz::expect("a difference as JSON", toJson(difference).at("text") == describe(difference));
    }
    const std::string written = expectationFileText(*facts);
    fuzz::trace() = " " + written;
    const auto again = readBy(expectationOf, written);
    fuzz::expect("an expectation that is written again is one", again.has_value());
    fuzz::expect("an expectation that is written again", compare(*again->of(""), false, *facts).empty());
}

std::vector<CaseLine> casesIn(const std::string& text) {
    return readCasesFile(fileOf(text));
}

/// The cases as CSV with every field in quotes.
std::string csvOf(const std::vector<CaseLine>& lines) {
    std::string csv = "product,language,status\n";
    for (const CaseLine& line : lines) {
        csv += '"' + std::to_string(line.product) + "\",\"" + std::to_string(line.language) + "\",\"";
        for (const char c : line.status) {
            csv += std::string(c == '"' ? 2 : 1, c);
        }
        csv += "\"\n";
    }
    return csv;
}

void checkCases(const std::string& text) {
    const auto lines = readBy(casesIn, text);
    const std::string csv = csvOf(lines.value_or(std::vector<CaseLine>()));
    const bool isCsv =
        std::count(csv.begin(), csv.end(), '\n') == static_cast<std::ptrdiff_t>(lines ? lines->size() + 1 : 0);
    if (isCsv) {  // a status with a line feed, which JSON can have, is none
        const auto again = readBy(casesIn, csv);
        fuzz::trace() = " " + csv;
        fuzz::expect("cases that are written again", again.has_value());
        fuzz::expectEqual("cases that are written again", csvOf(*again), csv);
    }
}

void checkRerun(const std::string& text) {
    MatrixOptions options;
    options.rerun = fileOf(text);
    readBy([&](const std::string&) { return casesOf(options); }, text);
}

/// One of the values in the document, at any depth.
Json& valueIn(Json& document, std::minstd_rand& random) {
    Json* place = &document;
    while (place->is_structured() && !place->empty() && random() % 8 != 0) {
        place = &*std::next(place->begin(), static_cast<std::ptrdiff_t>(random() % place->size()));
    }
    return *place;
}

/// The document with another value in the place of one of its own: an odd one, or one that stands elsewhere in it.
Json changed(Json document, unsigned int seed) {
    const Json odd[] = {nullptr, true, -1, 1.5, 1e300, 2147483648, "", "x", "5100", Json::array(), Json::object()};
    std::minstd_rand random(seed);
    Json& place = valueIn(document, random);
    const Json value = random() % 4 == 0 ? valueIn(document, random) : odd[random() % std::size(odd)];
    place = value;
    return document;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(unsigned char* data, std::size_t size, std::size_t room);

/// Every other time the input changes as any bytes do.
extern "C" std::size_t LLVMFuzzerCustomMutator(unsigned char* data, std::size_t size, std::size_t room,
                                               unsigned int seed) {
    const Json document = Json::parse(data, data + size, nullptr, false);
    const std::string text = document.is_structured() && seed % 2 == 0 ? changed(document, seed).dump() : "";
    if (text.empty() || text.size() > room) {
        return LLVMFuzzerMutate(data, size, room);
    }
    std::copy(text.begin(), text.end(), data);
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string text(data, data + size);
    fuzz::trace().clear();
    checkJournal(text);
    checkExpectation(text);
    checkCases(text);
    checkRerun(text);
    return 0;
}
