#include <gmock/gmock.h>

#include <optional>
#include <tuple>

#include "installer-host/Options.h"
#include "installer-host/run/WorkerProtocol.h"

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
    EXPECT_EQ(options.product, -2147483647 - 1);
    EXPECT_EQ(options.language, -1);
    EXPECT_THAT(options.steps, ElementsAre(Step::PostInstall));
    EXPECT_EQ(options.blockVersion, 65535);
    EXPECT_TRUE(options.direct && options.dryRun && options.verbose);
    EXPECT_EQ(options.root, "/r");
    EXPECT_EQ(options.format, Format::Json);
    EXPECT_EQ(options.timeout, 0U);
    EXPECT_EQ(options.bundle, "-x") << "a bundle's name may look like an option";
}

std::optional<WorkerOrder> parseWorkerArguments(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "installer-host-worker");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    return parseOrder(static_cast<int>(argv.size()), argv.data());
}

TEST(WorkerOrder, SurvivesTheWayToTheWorker) {
    const WorkerOrder order{7,   "/a bundle\n\xFF", {Step::PostInstall, Step::PreInstall}, -2147483647 - 1, -1, 65535,
                            true};
    const std::vector<std::string> arguments = toArguments(order);
    const auto parsed = parseWorkerArguments(arguments);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(std::tie(parsed->eventFd, parsed->bundle, parsed->steps, parsed->product, parsed->language,
                       parsed->blockVersion, parsed->direct),
              std::tie(order.eventFd, order.bundle, order.steps, order.product, order.language, order.blockVersion,
                       order.direct));
    for (std::size_t spoilt = 0; spoilt < arguments.size(); ++spoilt) {
        std::vector<std::string> wrong = arguments;
        wrong[spoilt] += "x";
        EXPECT_EQ(parseWorkerArguments(wrong).has_value(), spoilt == 1) << "argument " << spoilt;
    }
    EXPECT_FALSE(parseWorkerArguments({"7", "/bundle"}));
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
    }
}

}  // namespace
