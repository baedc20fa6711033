#include <charconv>
#include <cstdint>
#include <limits>
#include <sstream>
#include <system_error>

#include "installer-host/options/Commands.h"
#include "installer-host/options/OptionKinds.h"

namespace host {

namespace {

constexpr const char* MATRIX_FOOTER = R"(Examples:
  Try two products in six languages, each with three install-status files:
    installer-host matrix --product 5100,3100 --language 0-3,6,11 \
        --status on,off,none CorvaneInstall.bundle
  Note what comes of it, and compare with it later:
    installer-host matrix --product 5100,3100 --write-expect expected.json \
        CorvaneInstall.bundle
    installer-host matrix --product 5100,3100 --expect expected.json \
        CorvaneInstall.bundle)";

constexpr std::size_t MOST_CODES = 10000;
constexpr unsigned MOST_JOBS = 256;

std::vector<std::string> partsOf(const std::string& name, const std::string& list) {
    std::vector<std::string> parts;
    std::istringstream stream(list + ",");
    for (std::string part; std::getline(stream, part, ',');) {
        if (part.empty()) {
            throw CLI::ValidationError(name, quoted(list) + " has an empty place");
        }
        parts.push_back(part);
    }
    return parts;
}

/// Adds the codes of "7", "-1" or "0-3".
void addCodes(const std::string& name, const std::string& part, std::vector<std::int32_t>& codes) {
    std::int32_t first = 0, last = 0;
    const char* const end = part.data() + part.size();
    auto [stop, error] = std::from_chars(part.data(), end, first);
    last = first;
    if (error == std::errc() && stop != end && *stop == '-') {
        const auto rest = std::from_chars(stop + 1, end, last);
        stop = rest.ptr;
        error = rest.ec;
    }
    if (error != std::errc() || stop != end || last < first) {
        throw CLI::ValidationError(name, quoted(part) + " is neither a whole number nor a range such as 0-3");
    }
    if (std::int64_t{last} - first >= std::int64_t{MOST_CODES}) {
        throw CLI::ValidationError(name, quoted(part) + " is more than " + std::to_string(MOST_CODES) + " codes");
    }
    for (std::int64_t code = first; code <= last; ++code) {
        codes.push_back(static_cast<std::int32_t>(code));
    }
}

CLI::Option* addCodeList(CLI::App& app, const std::string& name, std::vector<std::int32_t>& codes,
                         const std::string& help) {
    const auto take = [=, &codes](const std::string& list) {
        for (const std::string& part : partsOf(name, list)) {
            addCodes(name, part, codes);
        }
    };
    return app.add_option_function<std::string>(name, take, help)->type_name("LIST");
}

CLI::Option* addStatuses(CLI::App& app, std::vector<std::string>& statuses) {
    const auto take = [&statuses](const std::string& list) { statuses = partsOf("--status", list); };
    return app
        .add_option_function<std::string>("--status", take,
                                          "What the install-status file says, for example on,off,none: on or off, none "
                                          "for no such file, as-is for what "
                                          "the root has, or a FILE that is put in its place (default: as-is)")
        ->type_name("LIST");
}

/// The options that say which cases there are.
void addCases(CLI::App& app, MatrixOptions& matrix) {
    CLI::Option* products =
        addCodeList(app, "--product", matrix.products,
                    "The codes of the products, with commas between them. This, --cases or --rerun is "
                    "required");
    CLI::Option* languages =
        addCodeList(app, "--language", matrix.languages,
                    "The languages as classic Mac OS codes, or ranges of them, for example 0-3,6,11 (default: 0)")
            ->needs(products);
    CLI::Option* statuses = addStatuses(app, matrix.statuses)->needs(products);
    addFile(app, "--cases", matrix.cases,
            "Take the cases from FILE: CSV with a header, or a JSON array of objects; product, and language and status "
            "where they are wanted")
        ->excludes(products)
        ->excludes(languages)
        ->excludes(statuses);
    addFile(app, "--rerun", matrix.rerun, "Run only the cases that did not pass in FILE, a matrix's report in JSON");
}

}  // namespace

void addMatrixCommand(CLI::App& app, Options& options) {
    CLI::App& matrix = *app.add_subcommand(
        "matrix",
        "Run a plug-in's steps for many products, languages and install-status files, each in a root of its own");
    matrix.footer(MATRIX_FOOTER);
    addBundle(matrix, options);
    addCases(matrix, options.matrix);
    addNumber(matrix, "--jobs", "N", options.matrix.jobs, 1U, MOST_JOBS,
              "Run N cases at a time (default: as many as there are processors)");
    addRoot(matrix, options,
            "Give each case a copy of the private root DIR, which stays unchanged (default: an empty one)");
    addCalls(matrix, options);
    addExpectation(matrix, options);
    addFile(matrix, "--junit", options.matrix.junit,
            "Write a report for continuous integration, JUnit's XML, into FILE");
    addFormat(matrix, options);
    addTimeout(matrix, options);
    addManners(matrix, options);
    matrix.callback([&] {
        options.command = Command::Matrix;
        checkedPath("BUNDLE", options.bundle);
        MatrixOptions& wanted = options.matrix;
        if (wanted.products.empty() && wanted.cases.empty() && wanted.rerun.empty()) {
            throw CLI::RequiredError("say which cases to run: --product LIST, --cases FILE or --rerun FILE",
                                     CLI::ExitCodes::RequiredError);
        }
        wanted.languages = wanted.languages.empty() ? std::vector<std::int32_t>{0} : wanted.languages;
        wanted.statuses = wanted.statuses.empty() ? std::vector<std::string>{"as-is"} : wanted.statuses;
    });
}

}  // namespace host
