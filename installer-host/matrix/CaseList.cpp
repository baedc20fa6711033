#include "installer-host/matrix/CaseList.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>

#include "installer-host/ExitStatus.h"
#include "installer-host/InputFile.h"
#include "installer-host/JsonInput.h"
#include "installer-host/expect/CaseName.h"
#include "installer-host/matrix/CasesFile.h"
#include "installer-host/report/JsonReport.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr const char* KEPT_STATUS = "as-is";

/// Collects the cases.
class Collector {
public:
    /// `folder` is where relative paths of install-status files lead from.
    explicit Collector(fs::path folder) : folder_(std::move(folder)) {}

    void add(std::int32_t product, std::int32_t language, const std::string& status) {
        const std::size_t index = statusIndex(status.empty() ? KEPT_STATUS : status);
        const std::string name =
            std::to_string(product) + "/" + std::to_string(language) + "/" + list.statuses[index].name;
        if (!names_.insert(name).second) {
            throw Failure(ExitStatus::Usage, "the case " + name + " is there twice");
        }
        if (names_.size() > MOST_CASES) {
            throw Failure(ExitStatus::Usage, "a matrix has " + std::to_string(MOST_CASES) + " cases at most");
        }
        list.cases.push_back({product, language, index, name});
    }

    CaseList list;

private:
    std::size_t statusIndex(const std::string& word) {
        const auto known = indexes_.find(word);
        if (known != indexes_.end()) {
            return known->second;
        }
        InstallStatus status = installStatus(word, folder_);
        for (const InstallStatus& other : list.statuses) {
            if (other.name == status.name) {
                throw Failure(ExitStatus::Usage, "two install-status files have the name '" + status.name + "'");
            }
        }
        list.statuses.push_back(std::move(status));
        return indexes_[word] = list.statuses.size() - 1;
    }

    fs::path folder_;
    std::set<std::string> names_;
    std::map<std::string, std::size_t> indexes_;
};

/// What a report says of the cases that it has.
struct Report {
    std::set<std::string> passed;
    std::vector<CaseLine> failed;  ///< failed or not run
};

Report readReport(const std::string& file) {
    try {
        const auto document = parsedJson<Json>(readInput(file, "report"));
        std::map<std::string, std::string> files;
        for (const Json& status : document.at("statuses")) {
            const Json& path = status.at("file");
            files[status.at("status")] = path.is_null() ? status.at("status") : path;
        }
        Report report;
        for (const Json& one : document.at("cases")) {
            if (one.at("outcome") == "passed") {
                report.passed.insert(one.at("name"));
            } else {
                report.failed.push_back({wholeNumberIn<std::int32_t>(one, "product"),
                                         wholeNumberIn<std::int32_t>(one, "language"), files[one.at("status")]});
            }
        }
        return report;
    } catch (const Json::exception& fault) {
        throw Failure(ExitStatus::Usage, "'" + file + "' is not the report of a matrix in JSON: " + faultText(fault));
    } catch (const std::invalid_argument& fault) {
        throw Failure(ExitStatus::Usage, "'" + file + "' is not the report of a matrix: " + fault.what());
    }
}

CaseList fromLines(const std::vector<CaseLine>& lines, const fs::path& folder) {
    Collector collector(folder);
    for (const CaseLine& line : lines) {
        collector.add(line.product, line.language, line.status);
    }
    return collector.list;
}

CaseList fromOptions(const MatrixOptions& options) {
    if (!options.cases.empty()) {
        const fs::path file = fs::absolute(options.cases);
        return fromLines(readCasesFile(file), file.parent_path());
    }
    Collector collector(fs::current_path());
    for (const std::int32_t product : options.products) {
        for (const std::int32_t language : options.languages) {
            for (const std::string& status : options.statuses) {
                collector.add(product, language, status);
            }
        }
    }
    return collector.list;
}

}  // namespace

CaseList casesOf(const MatrixOptions& options) {
    if (options.rerun.empty()) {
        return fromOptions(options);
    }
    const Report report = readReport(options.rerun);
    const bool isAll = options.products.empty() && options.cases.empty();
    CaseList list = isAll ? fromLines(report.failed, fs::current_path()) : fromOptions(options);
    const auto hasPassed = [&](const MatrixCase& one) { return report.passed.count(one.name) != 0; };
    list.cases.erase(std::remove_if(list.cases.begin(), list.cases.end(), hasPassed), list.cases.end());
    list.passed.assign(report.passed.begin(), report.passed.end());
    return list;
}

}  // namespace host
