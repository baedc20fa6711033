#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "tests/host/HostSupport.h"

namespace {

using namespace test;
using testing::AllOf;
using testing::HasSubstr;

/// Called directly with a block of another version, a step shows its alert as a real panel, also out of a private root.
TEST(Alert, OfAWrongBlockVersionIsShownAndAnswered) {
    std::filesystem::create_directories(CV_SCREENSHOTS);
    const std::string picture = std::string(CV_SCREENSHOTS) + "/plug-in-alert.png";
    std::filesystem::remove(picture);
    const InstallRoot root;
    const ProcessResult result =
        run({"xvfb-run", "--auto-servernum", "--server-args=-screen 0 800x600x24", "sh", CV_ANSWER_ALERT_SCRIPT,
             picture, HOST_PROGRAM, "run", "--product=5100", "--step=post", "--entry=direct", "--block-version=999",
             "--root", root.path(), PLUGIN_BUNDLE});
    EXPECT_EQ(result.exitStatus, 1) << result.err;
    EXPECT_THAT(result.out, HasSubstr("resultFlags 0x00000000 -> 0x00000001\n"));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << "one alert: " << result.err;
    ASSERT_TRUE(std::filesystem::exists(picture));
    EXPECT_GT(std::filesystem::file_size(picture), 1000U);
}

}  // namespace
