#include <gmock/gmock.h>

#include "installer-host/options/Options.h"

namespace {

using namespace host;
using testing::AllOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Lt;
using testing::Not;
using testing::SizeIs;

ParsedOptions parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "installer-host");
    return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, AreRead) {
    const ParsedOptions parsed = parse({"run",
                                        "--product",
                                        "-2147483648",
                                        "--language=-1",
                                        "--step",
                                        "post",
                                        "--block-version",
                                        "65535",
                                        "--entry",
                                        "direct",
                                        "--root",
                                        "/r",
                                        "--dry-run",
                                        "--format",
                                        "json",
                                        "--timeout",
                                        "0",
                                        "-vv",
                                        "--changes-exit",
                                        "--",
                                        "-x"});
    ASSERT_TRUE(parsed.proceed) << parsed.text;
    const Options& options = parsed.options;
    EXPECT_EQ(options.command, Command::Run);
    EXPECT_EQ(options.installation.product, -2147483647 - 1);
    EXPECT_EQ(options.installation.language, -1);
    EXPECT_THAT(options.installation.steps, ElementsAre(Step::PostInstall));
    EXPECT_EQ(options.installation.blockVersion, 65535);
    EXPECT_TRUE(options.installation.direct && options.dryRun && options.verbose == 2 && options.changesExit);
    EXPECT_EQ(options.root, "/r");
    EXPECT_FALSE(options.machine);
    EXPECT_EQ(options.format, Format::Json);
    EXPECT_EQ(options.timeout, 0U);
    EXPECT_EQ(options.bundle, "-x") << "a bundle's name may look like an option";
}

TEST(Options, NameTheMachineItself) {
    const auto scopeOf = [](const std::vector<const char*>& more) {
        std::vector<const char*> arguments{"run", "--product=1", "--machine"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ParsedOptions parsed = parse(arguments);
        EXPECT_TRUE(parsed.proceed && parsed.options.machine && parsed.options.root.empty()) << parsed.text;
        EXPECT_EQ(parsed.options.bundle, "X.bundle");
        return parsed.options.scope;
    };
    EXPECT_THAT(scopeOf({"X.bundle"}), ElementsAre("/Library", "/Applications"));
    EXPECT_THAT(scopeOf({"--scope", "/a", "--scope", "/b", "X.bundle"}), ElementsAre("/a", "/b"));
    EXPECT_THAT(scopeOf({"--scope=/a", "X.bundle", "--scope", "/b"}), ElementsAre("/a", "/b"));
}

TEST(Options, NameTheCasesOfAMatrix) {
    const ParsedOptions parsed = parse({"matrix", "--product=5100,-3--1", "--language", "0-2,11", "X.bundle"});
    ASSERT_TRUE(parsed.proceed) << parsed.text;
    EXPECT_THAT(parsed.options.matrix.products, ElementsAre(5100, -3, -2, -1));
    EXPECT_THAT(parsed.options.matrix.languages, ElementsAre(0, 1, 2, 11));
    EXPECT_THAT(parsed.options.matrix.statuses, ElementsAre("as-is"));
    const ParsedOptions most = parse({"matrix", "--product=2147483646-2147483647", "--status=on,./on", "X.bundle"});
    EXPECT_THAT(most.options.matrix.products, ElementsAre(2147483646, 2147483647));
    EXPECT_THAT(most.options.matrix.languages, ElementsAre(0));
    EXPECT_THAT(most.options.matrix.statuses, ElementsAre("on", "./on"));
}

struct WrongUsage {
    std::vector<const char*> arguments;
    const char* message;
};

TEST(Options, SayWhatIsWrong) {
    const std::string longName(5000, 'a');
    const WrongUsage cases[] = {
        {{}, "a command is missing: run, "},
        {{"run", "X.bundle"}, "--product is required"},
        {{"run", "X.bundle", "--product", "0x10"}, "'0x10' is not a whole number from -2147483648 to 2147483647"},
        {{"run", "X.bundle", "--product", "5100", "--language", "fr"}, "0 for English or 1 for French"},
        {{"run", "X.bundle", "--product", "5100", "--step", "middle"}, "'middle' is not one of pre|post|both"},
        {{"run", "X.bundle", "--product", "5100", "--block-version", "65536"}, "from 0 to 65535"},
        {{"run", "X.bundle", "--product", "5100", "--timeout", "-1"}, "'-1' is not a whole number from 0"},
        {{"run", "X.bundle", "--product", "5100", "--rot", "/r"}, "no option '--rot'; did you mean --root?"},
        {{"run", "X.bundle", "--prod", "5100"}, "did you mean --product?"},
        {{"run", "X.bundle", "--product", "5100", "--unlike"}, "no option '--unlike'"},
        {{"rnu", "X.bundle"}, "no command 'rnu'; did you mean run?"},
        {{"run", "X.bundle", "--root", "/r", "--product"}, "--product needs a value"},
        {{"run", "X.bundle", "--product", "1", "--product", "2"}, "--product is given more than once"},
        {{"run", "X.bundle", "Y.bundle", "--product", "1"}, "'Y.bundle' is one argument too many"},
        {{"run", "X.bundle", "--product", "1", "--", "Y.bundle"}, "'Y.bundle' is one argument too many"},
        {{"run", "X.bundle", "--product", "1", "--", "--root"}, "'--root' is one argument too many"},
        {{"run", "--product", "1", "--", "X.bundle"}, "--root DIR for a private root, or --machine"},
        {{"run", "X.bundle", "--product", "1", "--root", "/r", "--dry-run=no"}, "--dry-run takes no value"},
        {{"run", "X.bundle", "--product", longName.c_str()}, "aaa...' is not a whole number"},
        {{"show", "--root", longName.c_str()}, "the name is longer than 4095 bytes"},
        {{"check", longName.c_str()}, "BUNDLE: the name is longer"},
        {{"check", ""}, "BUNDLE: the name is empty"},
        {{"run", "X.bundle", "--product", "5100"}, "--root DIR for a private root, or --machine"},
        {{"run", "X.bundle", "--product", "5100", "--scope", "/a", "--root", "/r"}, "--scope requires --machine"},
        {{"run", "X.bundle", "--product", "5100", "--machine", "--dry-run", "--scope=/a"}, "--dry-run"},
        {{"run", "X.bundle", "--product", "5100", "--root", ""}, "name is empty"},
        {{"run", "X.bundle", "--product", "5100", "--root=", "/r"}, "--root: its value is empty"},
        {{"show", "--root"}, "--root"},
        {{"show", "--root", "--machine"}, "'--machine' looks like an option"},
        {{"show", "--root", "/r", "--machine"}, "excludes --"},
        {{"run", "X.bundle", "--product", "1", "--root", "/r", "--dry-run", "--journal", "j"}, "excludes --"},
        {{"undo", "--root", "/r"}, "JOURNAL is required"},
        {{"undo", "j"}, "say where to work"},
        {{"show", "--root", "/r", "--key", "K"}, "--key requires --domain"},
        {{"show", "--root", "/r", "--domain=", "K"}, "--domain: its value is empty"},
        {{"show", "--root", "/r", "--domain", "--key"}, "--domain: '--key' is not a name"},
        {{"show", "--root", "/r", "--diff", "-x"}, "'-x' looks like an option"},
        {{"show", "--root", "/r", "--log", "--quiet"}, "'--quiet' looks like an option"},
        {{"show", "--root", "/r", "--color", "red"}, "'red' is not one of auto|always|never"},
        {{"show", "--root", "/r", "-q", "-v"}, "excludes --"},
        {{"completion", "tcsh"}, "'tcsh' is not one of bash|zsh|fish"},
        {{"show"}, "--root DIR for a private root, or --machine"},
        {{"run", "X.bundle", "--product", "1", "--root", "/r", "--expect", "e", "--write-expect", "f"}, "excludes --"},
        {{"matrix", "X.bundle"}, "--product LIST, --cases FILE or --rerun FILE"},
        {{"matrix", "X.bundle", "--product", "5100,fr"}, "'fr' is neither a whole number nor a range such as 0-3"},
        {{"matrix", "X.bundle", "--product", "3-1"}, "'3-1' is neither"},
        {{"matrix", "X.bundle", "--product", "1-2-3"}, "'1-2-3' is neither"},
        {{"matrix", "X.bundle", "--product", "1,,2"}, "'1,,2' has an empty place"},
        {{"matrix", "X.bundle", "--product", "-2147483648-2147483647"}, "more than 10000 codes"},
        {{"matrix", "X.bundle", "--product", "2147483648"}, "'2147483648' is neither"},
        {{"matrix", "X.bundle", "--cases", "c", "--product", "1"}, "excludes --"},
        {{"matrix", "X.bundle", "--cases", "c", "--status", "on"}, "--status"},
        {{"matrix", "X.bundle", "--product", "1", "--jobs", "0"}, "'0' is not a whole number from 1"},
        {{"matrix", "X.bundle", "--product", "1", "--machine"}, "no option '--machine'"},
        {{"show", "--machine", "--format", "xml"}, "'xml' is not one of text|json"},
    };
    for (const WrongUsage& wrong : cases) {
        const ParsedOptions parsed = parse(wrong.arguments);
        EXPECT_FALSE(parsed.proceed) << wrong.message;
        EXPECT_EQ(parsed.status, ExitStatus::Usage) << wrong.message;
        EXPECT_THAT(parsed.text, AllOf(HasSubstr(wrong.message), Not(HasSubstr("\n")), SizeIs(Lt(200U))));
        EXPECT_THAT(parsed.advice, HasSubstr("--help' for how it is used"));
    }
}

TEST(Options, HelpShowsHowToBegin) {
    using Arguments = std::vector<const char*>;
    for (const Arguments& arguments : {Arguments{"--help"},
                                       {"run", "--help"},
                                       {"matrix", "--help"},
                                       {"check", "--help"},
                                       {"show", "--help"},
                                       {"completion", "--help"}}) {
        const ParsedOptions parsed = parse(arguments);
        EXPECT_TRUE(!parsed.proceed && parsed.status == ExitStatus::Done);
        EXPECT_THAT(parsed.text, AllOf(HasSubstr("Usage: installer-host"), HasSubstr("xample"))) << arguments.front();
        EXPECT_THAT(parsed.text, Not(ContainsRegex("[^\n]{81}"))) << "wider than a terminal";
    }
}

}  // namespace
