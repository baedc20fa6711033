#include <gmock/gmock.h>

#include "tests/UI/AlertUser.h"
#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;

/// What comes of a step that is called directly with a block of another version, which it shows an alert for.
ProcessResult runWithAlert(const InstallRoot& root, const Strings& actions, const Strings& options) {
    Strings arguments = actions;
    arguments.insert(arguments.end(), {"--", HOST_PROGRAM, "run", "--product=5100", "--step=post", "--entry=direct",
                                       "--block-version=999", "--root", root.path(), PLUGIN_BUNDLE});
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runAlertUser(arguments);
}

/// The host shows it as a real panel, outside of the private root.
TEST(Alert, OfAWrongBlockVersionIsShownAndAnswered) {
    const InstallRoot root;
    const ProcessResult result = runWithAlert(root, {"--do", "click:0"}, {});
    EXPECT_EQ(linesWith(result.out, "alert"), Strings{"Alert of CorvaneInstall.bundle"});
    EXPECT_EQ(linesWith(result.out, "line"), Strings{"'Unable to set post install option keys.'"}) << result.err;
    EXPECT_EQ(linesWith(result.out, "button"), Strings{"OK default focused"});
    EXPECT_THAT(result.out, testing::HasSubstr("resultFlags 0x00000000 -> 0x00000001\n"));
    EXPECT_EQ(linesWith(result.out, "exit"), Strings{"1"});
    EXPECT_EQ(linesWith(result.out, "error").size(), 1U)
        << "what the exit status means, and nothing else: " << result.out;
}

TEST(Alert, ThatWaitsUntilTheTimeIsOverIsInTheReport) {
    const InstallRoot root;
    const ProcessResult result = runWithAlert(root, {}, {"--format=json", "--timeout=5"});
    EXPECT_EQ(linesWith(result.out, "exit"), Strings{"9"}) << result.err;
    EXPECT_TRUE(linesWith(result.out, "left").empty()) << "the panel outlives the run: " << result.out;
    const auto start = result.out.find("{\n");
    ASSERT_NE(start, std::string::npos) << result.out;
    const ProcessResult report = kept({9, result.out.substr(start, result.out.find("\n}\n") + 3 - start), ""});
    const auto alerts = nlohmann::json::parse(report.out)["alerts"];
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0]["text"], "Unable to set post install option keys.");
    EXPECT_TRUE(alerts[0]["answer"].is_null());
}

}  // namespace
