#include <gmock/gmock.h>

#include "tests/UI/AlertUser.h"
#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;

/// Called directly with a block of another version, a step shows its alert as a real panel, also out of a private root.
TEST(Alert, OfAWrongBlockVersionIsShownAndAnswered) {
    const InstallRoot root;
    const ProcessResult result =
        runAlertUser({"--do", "click:0", "--", HOST_PROGRAM, "run", "--product=5100", "--step=post", "--entry=direct",
                      "--block-version=999", "--root", root.path(), PLUGIN_BUNDLE});
    EXPECT_EQ(linesWith(result.out, "line"), Strings{"'Unable to set post install option keys.'"}) << result.err;
    EXPECT_EQ(linesWith(result.out, "button"), Strings{"OK default focused"});
    EXPECT_THAT(result.out, testing::HasSubstr("resultFlags 0x00000000 -> 0x00000001\n"));
    EXPECT_EQ(linesWith(result.out, "exit"), Strings{"1"});
    EXPECT_EQ(linesWith(result.out, "error").size(), 1U)
        << "what the exit status means, and nothing else: " << result.out;
}

}  // namespace
