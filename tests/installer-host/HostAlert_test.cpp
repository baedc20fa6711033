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

/// The report in JSON among what else was printed.
nlohmann::json reportIn(const ProcessResult& result, int status) {
    const auto start = result.out.find("{\n");
    const auto end = result.out.find("\n}\n", start);
    if (end == std::string::npos) {
        ADD_FAILURE() << "no report: " << result.out;
        return {};
    }
    return nlohmann::json::parse(kept({status, result.out.substr(start, end + 3 - start), ""}).out);
}

/// The host shows it as a real panel, outside of the private root.
TEST(Alert, OfAWrongBlockVersionIsShownAndAnswered) {
    const InstallRoot root;
    const ProcessResult result = runWithAlert(root, {"--do", "click:0"}, {"--format=json"});
    EXPECT_EQ(linesWith(result.out, "alert"), Strings{"Alert of CorvaneInstall.bundle"});
    EXPECT_EQ(linesWith(result.out, "line"), Strings{"'Unable to set post install option keys.'"}) << result.err;
    EXPECT_EQ(linesWith(result.out, "button"), Strings{"OK default focused"});
    const nlohmann::json report = reportIn(result, 1);
    EXPECT_EQ(report["steps"].back()["resultFlagsAfter"], 1);
    ASSERT_EQ(report["alerts"].size(), 1U);
    EXPECT_EQ(report["alerts"][0], nlohmann::json({{"title", "Alert of CorvaneInstall.bundle"},
                                                   {"text", "Unable to set post install option keys."},
                                                   {"buttons", {"OK"}},
                                                   {"answer", "OK"},
                                                   {"answeredBy", "user"}}));
    EXPECT_EQ(linesWith(result.out, "exit"), Strings{"1"});
    EXPECT_EQ(linesWith(result.out, "error").size(), 1U)
        << "what the exit status means, and nothing else: " << result.out;
}

TEST(Alert, ThatWaitsUntilTheTimeIsOverIsInTheReport) {
    const InstallRoot root;
    const ProcessResult result = runWithAlert(root, {}, {"--format=json", "--timeout=5"});
    EXPECT_EQ(linesWith(result.out, "exit"), Strings{"9"}) << result.err;
    EXPECT_TRUE(linesWith(result.out, "left").empty()) << "the panel outlives the run: " << result.out;
    const nlohmann::json alerts = reportIn(result, 9)["alerts"];
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0]["text"], "Unable to set post install option keys.");
    EXPECT_TRUE(alerts[0]["answer"].is_null());
}

}  // namespace
