#include <gmock/gmock.h>

#include "installer-host/Options.h"

namespace {

using namespace host;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

ParsedOptions parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "installer-host");
    return parseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, AreRead) {
    const ParsedOptions parsed =
        parse({"run",   "--product", "-2147483648", "--language=-1", "--step", "post",      "--block-version",
               "65535", "--entry",   "direct",      "--root",        "/r",     "--dry-run", "--format",
               "json",  "--timeout", "0",           "--verbose",     "--",     "-x"});
    ASSERT_TRUE(parsed.proceed) << parsed.text;
    const Options& options = parsed.options;
    EXPECT_EQ(options.command, Command::Run);
    EXPECT_EQ(options.installation.product, -2147483647 - 1);
    EXPECT_EQ(options.installation.language, -1);
    EXPECT_THAT(options.installation.steps, ElementsAre(Step::PostInstall));
    EXPECT_EQ(options.installation.blockVersion, 65535);
    EXPECT_TRUE(options.installation.direct && options.dryRun && options.verbose);
    EXPECT_EQ(options.root, "/r");
    EXPECT_EQ(options.format, Format::Json);
    EXPECT_EQ(options.timeout, 0U);
    EXPECT_EQ(options.bundle, "-x") << "a bundle's name may look like an option";
}

struct WrongUsage {
    std::vector<const char*> arguments;
    const char* message;
};

TEST(Options, SayWhatIsWrong) {
    const WrongUsage cases[] = {
        {{}, "run, check and show"},
        {{"run", "X.bundle"}, "--product is required"},
        {{"run", "X.bundle", "--product", "0x10"}, "'0x10' is not a whole number from -2147483648 to 2147483647"},
        {{"run", "X.bundle", "--product", "5100", "--language", "fr"}, "0 for English and 1 for French"},
        {{"run", "X.bundle", "--product", "5100", "--step", "middle"}, "'middle' is none of pre|post|both"},
        {{"run", "X.bundle", "--product", "5100", "--block-version", "65536"}, "from 0 to 65535"},
        {{"run", "X.bundle", "--product", "5100", "--timeout", "-1"}, "'-1' is not a whole number from 0"},
        {{"run", "X.bundle", "--product", "5100", "--rot", "/r"}, "--rot"},
        {{"show", "--format", "xml"}, "'xml' is none of text|json"},
    };
    for (const WrongUsage& wrong : cases) {
        const ParsedOptions parsed = parse(wrong.arguments);
        EXPECT_FALSE(parsed.proceed) << wrong.message;
        EXPECT_EQ(parsed.status, ExitStatus::Usage) << wrong.message;
        EXPECT_THAT(parsed.text, AllOf(HasSubstr(wrong.message), HasSubstr("--help' for how it is used")));
    }
}

TEST(Options, HelpShowsHowToBegin) {
    using Arguments = std::vector<const char*>;
    for (const Arguments& arguments :
         {Arguments{"--help"}, {"run", "--help"}, {"check", "--help"}, {"show", "--help"}}) {
        const ParsedOptions parsed = parse(arguments);
        EXPECT_TRUE(!parsed.proceed && parsed.status == ExitStatus::Done);
        EXPECT_THAT(parsed.text, AllOf(HasSubstr("Usage: installer-host"), HasSubstr("xample"))) << arguments.front();
    }
}

}  // namespace
