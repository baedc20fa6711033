#include "installer-host/expect/Expectation.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "installer-host/ExitStatus.h"
#include "installer-host/InputFile.h"
#include "installer-host/JsonInput.h"
#include "installer-host/report/Text.h"

namespace host {

namespace {

constexpr const char* ANY = "*";

bool isMatch(const CaseParts& pattern, const CaseParts& name) {
    return std::equal(
        pattern.begin(), pattern.end(), name.begin(),
        [](const std::string& wanted, const std::string& part) { return wanted == ANY || wanted == part; });
}

/// The texts of an array of numbers or texts.
std::vector<std::string> textsOf(const Json& array) {
    std::vector<std::string> texts;
    for (const Json& one : array) {
        texts.push_back(one.is_string() ? one.get<std::string>() : one.dump());
    }
    return texts;
}

[[noreturn]] void refuseSoManyCases() {
    throw std::invalid_argument("it covers more than " + std::to_string(MOST_CASES) + " cases");
}

/// The names of a grid's cases.
std::vector<std::string> namesIn(const Json& grid) {
    const auto products = textsOf(grid.at("products"));
    const auto languages = textsOf(grid.at("languages"));
    const auto statuses = textsOf(grid.at("statuses"));
    const std::size_t longest = std::max({products.size(), languages.size(), statuses.size()});
    if (longest > MOST_CASES || std::uint64_t{products.size()} * languages.size() * statuses.size() > MOST_CASES) {
        refuseSoManyCases();
    }
    std::vector<std::string> names;
    for (const std::string& product : products) {
        for (const std::string& language : languages) {
            for (const std::string& status : statuses) {
                names.push_back(nameOf({product, language, status}));
            }
        }
    }
    return names;
}

bool isReportOf(const char* command, const Json& document) {
    return document.contains("schema") && document.contains("command") && document["command"] == command;
}

/// Refuses misspelt members, which would otherwise expect nothing.
void requireKnown(const Json& object, const std::vector<std::string>& known) {
    for (const auto& [member, value] : object.items()) {
        if (!isKindOfFact(member) && std::find(known.begin(), known.end(), member) == known.end()) {
            throw std::invalid_argument("an expectation has no " + inQuotes(member));
        }
    }
}

}  // namespace

Expectation Expectation::read(const std::string& file) {
    Expectation expectation;
    expectation.file_ = file;
    try {
        expectation.take(parsedJson<Json>(readInput(file, "expectation")));
    } catch (const std::invalid_argument& fault) {
        throw Failure(ExitStatus::Usage, "'" + file + "' is not an expectation: " + fault.what());
    } catch (const Json::exception& fault) {
        throw Failure(ExitStatus::Usage, "'" + file + "' is not an expectation: " + faultText(fault));
    }
    return expectation;
}

void Expectation::take(const Json& object) {
    if (!object.is_object()) {
        throw std::invalid_argument("it holds no object");
    }
    complete_ = isReportOf("run", object) || isReportOf("matrix", object);
    if (isReportOf("matrix", object)) {
        takeMatrixReport(object);
    } else if (complete_) {
        add("*/*/*", factsOf(object));
    } else {
        const std::string version = object.value("expectation", "1.0");
        if (version.compare(0, 2, "1.") != 0) {
            throw std::invalid_argument("this program does not know version " + escaped(version) + " of expectations");
        }
        complete_ = object.value("complete", false);
        isForMatrix_ = object.contains("cases");
        requireKnown(object, {"expectation", "complete", "covers", "cases"});
        if (isForMatrix_) {
            takeCases(object["cases"]);
        } else {
            add("*/*/*", factsFrom(object));
        }
        if (object.contains("covers")) {
            takeCovers(object["covers"]);
        }
    }
    std::stable_sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
        return std::count(a.parts.begin(), a.parts.end(), ANY) > std::count(b.parts.begin(), b.parts.end(), ANY);
    });
}

void Expectation::takeCases(const Json& cases) {
    for (const auto& [pattern, facts] : cases.items()) {
        const CaseParts parts = partsOf(pattern);
        if (std::any_of(parts.begin(), parts.end(), [](const std::string& part) { return part.empty(); })) {
            throw std::invalid_argument(inQuotes(pattern) + " is not of the form PRODUCT/LANGUAGE/STATUS");
        }
        requireKnown(facts, {});
        add(pattern, factsFrom(facts));
    }
}

void Expectation::takeCovers(const Json& covers) {
    covers_.emplace();
    for (const Json& grid : covers) {
        for (std::string& name : namesIn(grid)) {
            covers_->push_back(std::move(name));
        }
        if (covers_->size() > MOST_CASES) {
            refuseSoManyCases();
        }
    }
}

void Expectation::takeMatrixReport(const Json& document) {
    isForMatrix_ = true;
    for (const Json& one : document.at("cases")) {
        if (!one.at("report").is_null()) {
            add(one.at("name"), factsOf(one.at("report")));
        }
    }
}

void Expectation::add(const std::string& pattern, Facts facts) {
    entries_.push_back({pattern, partsOf(pattern), std::move(facts)});
}

std::optional<Facts> Expectation::of(const std::string& caseName) const {
    const bool isCovered = !covers_ || std::find(covers_->begin(), covers_->end(), caseName) != covers_->end();
    const CaseParts parts = partsOf(caseName);
    std::optional<Facts> facts;
    for (const Entry& entry : entries_) {
        if (isCovered && isMatch(entry.parts, parts)) {
            facts = facts ? std::move(facts) : Facts();
            for (const auto& [name, fact] : entry.facts) {
                (*facts)[name] = fact;
            }
        }
    }
    return facts;
}

std::vector<std::string> Expectation::unused(const std::vector<std::string>& caseNames) const {
    std::vector<std::string> unused;
    if (covers_) {
        std::copy_if(covers_->begin(), covers_->end(), std::back_inserter(unused), [&](const std::string& name) {
            return std::find(caseNames.begin(), caseNames.end(), name) == caseNames.end();
        });
    }
    for (const Entry& entry : entries_) {
        const auto isUsed = [&](const std::string& name) { return isMatch(entry.parts, partsOf(name)); };
        if (isForMatrix_ && !covers_ && std::none_of(caseNames.begin(), caseNames.end(), isUsed)) {
            unused.push_back(entry.pattern);
        }
    }
    return unused;
}

}  // namespace host
