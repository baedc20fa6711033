// Command lines: any words get a short answer, and what is written down by the rules is read as
// meant.

#include <algorithm>
#include <initializer_list>
#include <limits>

#include "fuzz/Fuzz.h"
#include "installer-host/options/Options.h"

namespace {

using namespace host;
using fuzz::expectEqual;
using Words = std::vector<std::string>;

ParsedOptions parse(const Words& words) {
    std::vector<const char*> argv{"installer-host"};
    fuzz::trace().clear();
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
        fuzz::trace() += " " + fuzz::shown(word);
    }
    return parseOptions(static_cast<int>(argv.size()), argv.data());
}

/// What holds of the options of every command line that is taken.
void checkOptions(const Options& options) {
    const auto is = [&](std::initializer_list<Command> commands) {
        return std::find(commands.begin(), commands.end(), options.command) != commands.end();
    };
    const MatrixOptions& matrix = options.matrix;
    const bool hasLists = !matrix.products.empty();
    const bool hasPlace = is({Command::Run, Command::Undo, Command::Show});
    expectEqual("one place to work in", options.machine != !options.root.empty(),
                hasPlace || (is({Command::Matrix}) && !options.root.empty()));
    fuzz::expect("a matrix on the machine", !options.machine || hasPlace);
    fuzz::expect("a scope without a machine", options.machine || options.scope.empty());
    expectEqual("a bundle", !options.bundle.empty(), is({Command::Run, Command::Matrix, Command::Check}));
    expectEqual("steps", !options.installation.steps.empty(), is({Command::Run, Command::Matrix}));
    fuzz::expect("a journal to undo", !options.journal.empty() || !is({Command::Undo}));
    fuzz::expect("a journal of a dry run", options.journal.empty() || !options.dryRun || is({Command::Undo}));
    fuzz::expect("an expectation that is written and kept", options.expect.empty() || options.writeExpect.empty());
    fuzz::expect("a key without a domain", options.selection.key.empty() || !options.selection.domain.empty());
    fuzz::expect("more and less told", !options.quiet || options.verbose == 0);
    fuzz::expect("how much is told", options.verbose <= 2);
    fuzz::expect("cases of a matrix",
                 hasLists || !matrix.cases.empty() || !matrix.rerun.empty() || !is({Command::Matrix}));
    fuzz::expect("two sources of cases", !hasLists || matrix.cases.empty());
    for (const std::string& path : {options.root, matrix.cases, matrix.rerun, matrix.junit, options.expect,
                                    options.writeExpect, options.diff, options.log}) {
        fuzz::expect("an option as a path", path.empty() || path.front() != '-');
    }
}

void checkAnyWords(fuzz::Input& input) {
    const char* const usual[] = {"run",
                                 "matrix",
                                 "undo",
                                 "check",
                                 "show",
                                 "completion",
                                 "--product",
                                 "5100",
                                 "--product=1-3",
                                 "--language=1",
                                 "--status=on",
                                 "--cases=c",
                                 "--rerun=r",
                                 "--jobs",
                                 "2",
                                 "--root",
                                 "--root=/r",
                                 "--machine",
                                 "--scope",
                                 "/a",
                                 "--dry-run",
                                 "--journal=j",
                                 "--format",
                                 "json",
                                 "html",
                                 "text",
                                 "--timeout",
                                 "0",
                                 "--step=both",
                                 "--entry",
                                 "direct",
                                 "--",
                                 "--help",
                                 "--version",
                                 "X.bundle",
                                 "-1",
                                 "-",
                                 "-v",
                                 "-q",
                                 "--verbose",
                                 "--changes-exit",
                                 "--block-version",
                                 "--domain",
                                 "--key=k",
                                 "--diff=/d",
                                 "--expect=e",
                                 "--write-expect",
                                 "--junit=u",
                                 "--log=l",
                                 "--color=",
                                 "never",
                                 "--color=always",
                                 "bash",
                                 ","};
    Words words;
    while (input.remaining_bytes() > 0 && words.size() < 16) {
        words.push_back(input.ConsumeBool() ? input.PickValueInArray(usual) : input.ConsumeRandomLengthString(40));
    }
    const ParsedOptions parsed = parse(words);
    if (parsed.proceed) {
        checkOptions(parsed.options);
    } else if (parsed.status == ExitStatus::Done) {
        fuzz::expect("help without being asked", parsed.text.find("installer-host") != std::string::npos);
    } else {
        expectEqual("the status", static_cast<int>(parsed.status), static_cast<int>(ExitStatus::Usage));
        fuzz::expect("a short message", !parsed.text.empty() && parsed.text.size() < 400);
        fuzz::expect("advice", !parsed.advice.empty());
    }
}

/// Writes options in any order, with their values beside them or behind an equals sign.
class Writer {
public:
    explicit Writer(fuzz::Input& input) : input_(input) {}

    void flag(const std::string& name, bool isSet) {
        if (isSet) {
            put({name});
        }
    }

    /// Left out now and then when the value is the default.
    void value(const std::string& name, const std::string& text, bool isDefault = false) {
        if (isDefault && input_.ConsumeBool()) {
            return;
        }
        if (input_.ConsumeBool()) {
            put({name, text});
        } else {
            put({name + "=" + text});
        }
    }

    void put(const Words& words) {
        const auto place = input_.ConsumeIntegralInRange<std::size_t>(0, groups_.size());
        groups_.insert(groups_.begin() + static_cast<std::ptrdiff_t>(place), words);
    }

    [[nodiscard]] Words words(const std::string& command) const {
        Words all{command};
        for (const Words& group : groups_) {
            all.insert(all.end(), group.begin(), group.end());
        }
        return all;
    }

private:
    fuzz::Input& input_;
    std::vector<Words> groups_;
};

/// A path that neither looks like an option nor is empty.
std::string pathFrom(fuzz::Input& input) {
    const std::string text = input.ConsumeRandomLengthString(30);
    return "/" + std::string(text.c_str());
}

void checkRun(fuzz::Input& input) {
    Writer writer(input);
    const auto product = input.ConsumeIntegral<std::int32_t>();
    const auto language = input.ConsumeIntegral<std::int32_t>();
    const auto version = input.ConsumeIntegral<std::uint16_t>();
    const auto timeout = input.ConsumeIntegralInRange(0U, 86400U);
    const bool isDirect = input.ConsumeBool(), isJson = input.ConsumeBool(), onMachine = input.ConsumeBool();
    const bool isDry = !onMachine && input.ConsumeBool();
    const std::size_t steps = input.ConsumeIntegralInRange<std::size_t>(0, 2);
    const std::string bundle = pathFrom(input), root = pathFrom(input);
    const char* const stepNames[] = {"both", "pre", "post"};
    writer.value("--product", std::to_string(product));
    writer.value("--language", std::to_string(language), language == 0);
    writer.value("--block-version", std::to_string(version), version == XCOD_BLOCK_VERSION);
    writer.value("--timeout", std::to_string(timeout), timeout == 60);
    writer.value("--entry", isDirect ? "direct" : "table", !isDirect);
    writer.value("--format", isJson ? "json" : "text", !isJson);
    writer.value("--step", stepNames[steps], steps == 0);
    writer.flag("--machine", onMachine);
    writer.flag("--dry-run", isDry);
    writer.put({bundle});
    if (!onMachine) {
        writer.value("--root", root);
    }
    const ParsedOptions parsed = parse(writer.words("run"));
    const Installation& installation = parsed.options.installation;
    expectEqual("what is wrong", parsed.text, "");
    expectEqual("--product", installation.product, product);
    expectEqual("--language", installation.language, language);
    expectEqual("--block-version", installation.blockVersion, version);
    expectEqual("--entry", installation.direct, isDirect);
    expectEqual("the number of steps", installation.steps.size(), steps == 0 ? 2U : 1U);
    expectEqual("the last step", shortName(installation.steps.back()), std::string(steps == 1 ? "pre" : "post"));
    expectEqual("--timeout", parsed.options.timeout, timeout);
    expectEqual("--format", parsed.options.format == Format::Json, isJson);
    expectEqual("--machine", parsed.options.machine, onMachine);
    expectEqual("--dry-run", parsed.options.dryRun, isDry);
    expectEqual("--root", parsed.options.root, onMachine ? "" : root);
    expectEqual("the bundle", parsed.options.bundle, bundle);
}

/// A list of codes as `matrix` takes it; what it means is added to `codes`.
std::string codeListFrom(fuzz::Input& input, std::vector<std::int32_t>& codes) {
    std::string list;
    for (auto count = input.ConsumeIntegralInRange(1, 4); count > 0; --count) {
        const auto first = input.ConsumeIntegral<std::int32_t>();
        const std::int64_t last = first + input.ConsumeIntegralInRange(std::int64_t{0}, std::int64_t{3});
        const bool isRange = last > first && last <= std::numeric_limits<std::int32_t>::max();
        list += (list.empty() ? "" : ",") + std::to_string(first) + (isRange ? "-" + std::to_string(last) : "");
        for (std::int64_t code = first; code <= (isRange ? last : first); ++code) {
            codes.push_back(static_cast<std::int32_t>(code));
        }
    }
    return list;
}

void checkMatrix(fuzz::Input& input) {
    Writer writer(input);
    std::vector<std::int32_t> products, languages;
    const auto jobs = input.ConsumeIntegralInRange(1U, 256U);
    const auto told = input.ConsumeIntegralInRange(0U, 4U);
    const std::string bundle = pathFrom(input), report = pathFrom(input), status = input.ConsumeBool() ? "on" : "a b";
    writer.value("--product", codeListFrom(input, products));
    writer.value("--language", codeListFrom(input, languages));
    writer.value("--status", status + ",none");
    writer.value("--jobs", std::to_string(jobs));
    writer.value("--rerun", report);
    writer.put({bundle});
    for (unsigned i = 0; i < told; ++i) {
        writer.flag(i % 2 == 0 ? "-v" : "--verbose", true);
    }
    const ParsedOptions parsed = parse(writer.words("matrix"));
    const MatrixOptions& matrix = parsed.options.matrix;
    expectEqual("what is wrong", parsed.text, "");
    fuzz::expect("--product", matrix.products == products);
    fuzz::expect("--language", matrix.languages == languages);
    fuzz::expect("--status", matrix.statuses == Words{status, "none"});
    expectEqual("--jobs", matrix.jobs, jobs);
    expectEqual("--rerun", matrix.rerun, report);
    expectEqual("--verbose", parsed.options.verbose, std::min(told, 2U));
    expectEqual("the bundle", parsed.options.bundle, bundle);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static constexpr void (*CHECKS[])(fuzz::Input&) = {checkAnyWords, checkRun, checkMatrix};
    fuzz::Input input(data, size);
    input.PickValueInArray(CHECKS)(input);
    return 0;
}
