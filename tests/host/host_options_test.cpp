#include <gmock/gmock.h>

#include "tools/installer-host/Options.h"

namespace {

using namespace host;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

ParsedOptions parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "installer-host");
    return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, AreReadAndSurviveTheWayToTheWorker) {
    const ParsedOptions parsed =
        parse({"run",   "--product", "-2147483648", "--language=-1", "--step",       "post",      "--block-version",
               "65535", "--entry",   "direct",      "--root",        "/r",           "--dry-run", "--format",
               "json",  "--timeout", "0",           "--verbose",     "--event-fd=7", "--",        "-x"});
    ASSERT_TRUE(parsed.proceed) << parsed.text;
    EXPECT_TRUE(parsed.options.dryRun && parsed.options.verbose);
    EXPECT_EQ(parsed.options.root, "/r");
    EXPECT_EQ(parsed.options.format, Format::Json);
    EXPECT_EQ(parsed.options.timeout, 0U);

    std::vector<const char*> toWorker;
    const std::vector<std::string> arguments = toArguments(parsed.options);
    for (const std::string& argument : arguments) {
        toWorker.push_back(argument.c_str());
    }
    for (const Options& options : {parsed.options, parse(toWorker).options}) {
        EXPECT_EQ(options.command, Command::Run);
        EXPECT_EQ(options.product, -2147483647 - 1);
        EXPECT_EQ(options.language, -1);
        EXPECT_THAT(options.steps, ElementsAre(Step::PostInstall));
        EXPECT_EQ(options.blockVersion, 65535);
        EXPECT_TRUE(options.direct);
        EXPECT_EQ(options.eventFd, 7);
        EXPECT_EQ(options.bundle, "-x") << "a bundle's name may look like an option";
    }
}

struct WrongUsage {
    std::vector<const char*> arguments;
    const char* message;
};

TEST(Options, SayWhatIsWrong) {
    const WrongUsage cases[] = {
        {{}, "run, check and show"},
        {{"install"}, "run, check and show"},
        {{"run"}, "BUNDLE is required"},
        {{"run", "X.bundle"}, "--product is required"},
        {{"run", "X.bundle", "--product", "Ambrel"}, "'Ambrel' is not a whole number from -2147483648 to 2147483647"},
        {{"run", "X.bundle", "--product", ""}, "'' is not a whole number"},
        {{"run", "X.bundle", "--product", "2147483648"}, "'2147483648' is not a whole number"},
        {{"run", "X.bundle", "--product", "0x10"}, "'0x10' is not a whole number"},
        {{"run", "X.bundle", "--product", "5100", "--language", "fr"}, "0 for English and 1 for French"},
        {{"run", "X.bundle", "--product", "5100", "--step", "middle"}, "'middle' is none of pre|post|both"},
        {{"run", "X.bundle", "--product", "5100", "--block-version", "65536"}, "from 0 to 65535"},
        {{"run", "X.bundle", "--product", "5100", "--timeout", "-1"}, "'-1' is not a whole number from 0"},
        {{"run", "X.bundle", "--product", "5100", "--rot", "/r"}, "--rot"},
        {{"show", "--format", "xml"}, "'xml' is none of text|json"},
        {{"check", "X.bundle", "Y.bundle"}, "Y.bundle"},
    };
    for (const WrongUsage& wrong : cases) {
        const ParsedOptions parsed = parse(wrong.arguments);
        EXPECT_FALSE(parsed.proceed) << wrong.message;
        EXPECT_EQ(parsed.status, ExitStatus::Usage) << wrong.message;
        EXPECT_THAT(parsed.text, AllOf(HasSubstr(wrong.message), HasSubstr("--help' for how it is used")));
    }
}

TEST(Options, HelpShowsHowToBegin) {
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"--help"}, {"run", "--help"}, {"check", "--help"}, {"show", "--help"}}) {
        const ParsedOptions parsed = parse(arguments);
        EXPECT_FALSE(parsed.proceed);
        EXPECT_EQ(parsed.status, ExitStatus::Done);
        EXPECT_THAT(parsed.text, HasSubstr("Usage: installer-host")) << arguments.front();
        EXPECT_THAT(parsed.text, HasSubstr("xample")) << arguments.front();
        EXPECT_THAT(parsed.text, testing::Not(HasSubstr("event-fd")));
    }
}

}  // namespace
