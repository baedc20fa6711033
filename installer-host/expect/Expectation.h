#pragma once

#include <optional>
#include <string>
#include <vector>

#include "installer-host/expect/CaseName.h"
#include "installer-host/expect/Facts.h"

namespace host {

/// What is expected of a run, or of the cases of a matrix.
class Expectation {
public:
    /// Reads a file: an expectation, as ExpectationFile.h writes it or by hand, or the report of a run or a matrix in
    /// JSON. Throws Failure: RootNotMade when it cannot be read, Usage when it is none of these.
    static Expectation read(const std::string& file);

    /// The file's name, as it was given.
    const std::string& file() const { return file_; }

    /// Whether it says what is expected of cases, by their names.
    bool isForMatrix() const { return isForMatrix_; }

    /// Whether a change that it does not name is a difference.
    bool isComplete() const { return complete_; }

    /// What is expected of the case with this name, PRODUCT/LANGUAGE/STATUS; nothing when the case is not expected. An
    /// expectation of one run is that of every case, and of the run itself, whose name is empty.
    std::optional<Facts> of(const std::string& caseName) const;

    /// The names of the expected cases, or the patterns, that none of these names is among.
    std::vector<std::string> unused(const std::vector<std::string>& caseNames) const;

private:
    /// What is expected of all cases that a pattern names. "*" stands for any product, language or status.
    struct Entry {
        std::string pattern;
        CaseParts parts;
        Facts facts;
    };

    void take(const Json& object);
    void takeCases(const Json& cases);
    void takeCovers(const Json& covers);
    void takeMatrixReport(const Json& document);
    void add(const std::string& pattern, Facts facts);

    std::string file_;
    bool isForMatrix_ = false;
    bool complete_ = false;
    std::vector<Entry> entries_;                      ///< the more particular ones last
    std::optional<std::vector<std::string>> covers_;  ///< the names of all expected cases, where the file lists them
};

}  // namespace host
