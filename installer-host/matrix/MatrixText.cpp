#include "installer-host/matrix/MatrixText.h"

#include <algorithm>
#include <map>

#include "installer-host/matrix/MatrixDocument.h"
#include "installer-host/report/Lines.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/Text.h"
#include "installer-host/report/TextPieces.h"

namespace host {

namespace {

using Outcome = CaseResult::Outcome;

constexpr std::size_t NAME_WIDTH = 24;

std::string rightAligned(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string headText(const MatrixResult& matrix) {
    const Options& options = matrix.options;
    std::string text =
        Line(0, 2)
            .addWords("Matrix of " + counted(matrix.results.size(), "case", "cases") + ", each in " +
                      (options.root.empty() ? "an empty root" : "a copy of the private root " + escaped(options.root)))
            .text();
    text += Line(2).addWords("with " + escaped(options.bundle)).text();
    if (!matrix.bundle.identifier.empty()) {
        text += Line(2).addWords(escaped(matrix.bundle.identifier) + " " + escaped(matrix.bundle.version)).text();
    }
    text += Line(2).addWords("started " + timeText(matrix.started) + ", installer-host " INSTALLER_HOST_VERSION).text();
    if (!options.matrix.rerun.empty()) {
        text += Line(2).addWords("only what did not pass in " + escaped(options.matrix.rerun)).text();
    }
    if (matrix.expectation) {
        text += Line(2).addWords("compared with " + escaped(options.expect)).text();
    }
    return text;
}

/// Why the case failed, or what changed.
std::string outlineOf(const CaseResult& result) {
    if (result.outcome == Outcome::NotRun) {
        return "the user ended the matrix first";
    }
    const Json& error = result.report["error"];
    const Json expectation = result.report.value("expectation", Json());
    if (result.status == ExitStatus::NotAsExpected && expectation.is_object()) {
        const Json& differences = expectation["differences"];
        return differences[0]["text"].get<std::string>() +
               (differences.size() > 1 ? ", and " + std::to_string(differences.size() - 1) + " more" : "");
    }
    return error.is_null() ? result.report["summary"].get<std::string>() : error["what"].get<std::string>();
}

std::string caseLine(const MatrixCase& one, const CaseResult& result) {
    static const std::map<Outcome, const char*> SIGNS = {
        {Outcome::Passed, "ok       "}, {Outcome::Failed, "FAILED   "}, {Outcome::NotRun, "not run  "}};
    Line line(2, 11 + NAME_WIDTH);
    line.add(SIGNS.at(result.outcome) + padded(escaped(one.name), NAME_WIDTH - 1));
    if (result.outcome != Outcome::NotRun) {
        line.addWords(secondsText(result.duration) + (result.isSlow ? ", slow;" : ";"));
    }
    return line.addWords(outlineOf(result)).text();
}

/// The grid: products go down, languages across, and a cell has a sign for each status.
class Grid {
public:
    Grid(const MatrixResult& matrix, const Json& document) : matrix_(matrix), document_(document) {
        for (const Json& product : document["products"]) {
            first_ = std::max(first_, product["product"].dump().size());
        }
        width_ = std::max(matrix.list.statuses.size(), LEAST_WIDTH);
        for (const Json& language : document["languages"]) {
            width_ = std::max(width_, language["language"].dump().size());
        }
        for (std::size_t i = 0; i < matrix.results.size(); ++i) {
            const MatrixCase& one = matrix.list.cases[i];
            std::string& cell = cells_[{one.product, one.language}];
            cell.resize(matrix.list.statuses.size(), ' ');
            cell[one.status] = signOf(matrix.results[i].outcome);
        }
    }

    std::string text() const {
        std::string names;
        for (const InstallStatus& status : matrix_.list.statuses) {
            names += (names.empty() ? "" : ", ") + escaped(status.name);
        }
        std::string text =
            Line(0, 2)
                .addWords("Products and languages (. passed, F failed, - not run; in each cell: " + names + ")")
                .text();
        const std::size_t most = std::max<std::size_t>(1, (REPORT_WIDTH - first_ - TOTAL_WIDTH) / (width_ + 2));
        const Json& languages = document_["languages"];
        for (std::size_t begin = 0; begin < languages.size(); begin += most) {
            text += block(begin, std::min(begin + most, languages.size()));
        }
        return text;
    }

private:
    static constexpr std::size_t TOTAL_WIDTH = 18;
    static constexpr std::size_t LEAST_WIDTH = 7;

    static char signOf(Outcome outcome) {
        return outcome == Outcome::Passed ? '.' : outcome == Outcome::Failed ? 'F' : '-';
    }

    static std::string passedText(const Json& totals) { return totals["passed"].dump() + "/" + totals["cases"].dump(); }

    /// Part of the grid that fits the width: some languages.
    std::string block(std::size_t begin, std::size_t end) const {
        const Json& languages = document_["languages"];
        std::string head = "  " + std::string(first_, ' '), foot = "  " + padded("", first_);
        for (std::size_t i = begin; i < end; ++i) {
            head += "  " + rightAligned(languages[i]["language"].dump(), width_);
            foot += "  " + rightAligned(passedText(languages[i]), width_);
        }
        std::string text = head + "  passed\n";
        for (const Json& product : document_["products"]) {
            text += "  " + rightAligned(product["product"].dump(), first_);
            for (std::size_t i = begin; i < end; ++i) {
                const auto cell = cells_.find({product["product"], languages[i]["language"]});
                text += "  " + rightAligned(cell == cells_.end() ? "" : cell->second, width_);
            }
            text += "  " + passedText(product) + "\n";
        }
        return text + foot + "  " + passedText(document_["counts"]) + "\n";
    }

    const MatrixResult& matrix_;
    const Json& document_;
    std::map<std::pair<std::int32_t, std::int32_t>, std::string> cells_;
    std::size_t first_ = 0, width_ = 0;  ///< of the column of products, and of the others
};

/// A section that names the cases of a kind.
template <typename Predicate>
std::string namesText(const MatrixResult& matrix, const std::string& title, Predicate isOne) {
    std::string text;
    for (std::size_t i = 0; i < matrix.results.size(); ++i) {
        if (const std::string note = isOne(matrix.results[i]); !note.empty()) {
            text += Line(2).addWords(escaped(matrix.list.cases[i].name) + ": " + note).text();
        }
    }
    return text.empty() ? text : "\n" + title + "\n" + text;
}

std::string noticesText(const MatrixResult& matrix) {
    const std::string median = secondsText(medianOf(matrix.results));
    return namesText(matrix, "Slow: over a second, and over three times the median of " + median,
                     [](const CaseResult& one) { return one.isSlow ? secondsText(one.duration) : ""; }) +
           namesText(matrix, "Processes that were left running, and ended", [](const CaseResult& one) {
               std::string names;
               for (const Json& name : leftProcesses(one) ? one.report["leftProcesses"] : Json::array()) {
                   names += (names.empty() ? "" : ", ") + escaped(name.get<std::string>());
               }
               return names;
           });
}

std::string indented(const std::string& text) {
    std::string result;
    for (std::size_t begin = 0, end; begin < text.size(); begin = end) {
        end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        result += (text[begin] == '\n' ? "" : "  ") + text.substr(begin, end - begin);
    }
    return result;
}

std::string failuresText(const MatrixResult& matrix) {
    std::string text;
    for (std::size_t i = 0; i < matrix.results.size(); ++i) {
        const CaseResult& one = matrix.results[i];
        if (one.outcome == Outcome::Failed) {
            text += "\nFAILED " + escaped(matrix.list.cases[i].name) + ", exit status " +
                    std::to_string(static_cast<int>(one.status)) + "\n" + indented(one.messages) + indented(one.text);
        }
    }
    return text;
}

std::string unusedText(const MatrixResult& matrix) {
    std::string text = matrix.unused.empty() ? "" : "\nExpected, and not run\n";
    for (const std::string& name : matrix.unused) {
        text += Line(2).addWords("! " + escaped(name)).text();
    }
    return text;
}

}  // namespace

std::string matrixProblemsText(const MatrixResult& matrix) {
    return unusedText(matrix) + failuresText(matrix);
}

std::string matrixText(const MatrixResult& matrix, const Json& document) {
    std::string text = headText(matrix) + "\nCases\n";
    for (std::size_t i = 0; i < matrix.results.size(); ++i) {
        text += caseLine(matrix.list.cases[i], matrix.results[i]);
    }
    text += matrix.results.empty() ? "  none\n" : "\n" + Grid(matrix, document).text();
    text += noticesText(matrix) + matrixProblemsText(matrix);
    const Json& counts = document["counts"];
    const std::string notRun = counts["notRun"] == 0 ? "" : ", " + counts["notRun"].dump() + " not run";
    return text + "\n" +
           Line(0, 2)
               .addWords("In all: " + counts["passed"].dump() + " passed, " + counts["failed"].dump() + " failed" +
                         notRun + "; something changed in " + counts["changed"].dump() + ".")
               .text();
}

}  // namespace host
