// Command lines: any words get a short answer, and what is written down by the rules is read as
// meant.

#include <algorithm>

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

void checkAnyWords(fuzz::Input& input) {
    const char* const usual[] = {
        "run",       "check",    "show",        "--product",      "--product=5100", "--root",       "--root=/r",
        "--machine", "--scope",  "/a",          "--dry-run",      "--format",       "json",         "--format=text",
        "--timeout", "0",        "--step=both", "--entry",        "direct",         "--",           "--help",
        "--version", "X.bundle", "-1",          "--changes-exit", "--verbose",      "--language=1", "--block-version",
        "-v",        "-"};
    Words words;
    while (input.remaining_bytes() > 0 && words.size() < 16) {
        words.push_back(input.ConsumeBool() ? input.PickValueInArray(usual) : input.ConsumeRandomLengthString(40));
    }
    const ParsedOptions parsed = parse(words);
    const Options& options = parsed.options;
    if (parsed.proceed) {
        const bool isCheck = options.command == Command::Check;
        expectEqual("one place to work in", options.machine != !options.root.empty(), !isCheck);
        fuzz::expect("a scope without a machine", options.machine || options.scope.empty());
        const bool takesBundle = isCheck || options.command == Command::Run;
        expectEqual("a bundle", !options.bundle.empty(), takesBundle);
        fuzz::expect("steps of a run", !options.installation.steps.empty() || options.command != Command::Run);
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    if (input.ConsumeBool()) {
        checkRun(input);
    } else {
        checkAnyWords(input);
    }
    return 0;
}
