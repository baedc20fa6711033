#include "CvBase/Util/PlatformInfo.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"
#include "tests/support/Text.h"

namespace {

/// An application whose program is `program` and whose information dictionary has `entries`, as GNUstep looks for it.
/// On a Mac it lies in Contents/Info.plist.
std::string makeApplication(const test::TempDir& folder, const std::string& program, const std::string& entries) {
    const std::string bundle = folder / "Demo.app";
    test::writeFile(
        bundle + "/Resources/Info-gnustep.plist",
        R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + entries + "</dict></plist>");
    std::filesystem::copy_file(PRINT_PLATFORM_INFO, bundle + "/" + program);
    return bundle + "/" + program;
}

TEST(PlatformInfo, TheNamesAndTheVersionAreTheMainBundles) {
    const struct {
        std::string entries, expectedName, expectedVersion;
    } cases[] = {
        {"<key>CFBundleDisplayName</key><string>Shown \xC3\xA9</string><key>CFBundleName</key><string>Short</string>"
         "<key>CFBundleVersion</key><string>1.2.3</string>",
         "Shown \xC3\xA9", "1.2.3"},
        {"<key>CFBundleName</key><string>Short</string>", "Short", ""},
        {"<key>CFBundleDisplayName</key><string></string><key>CFBundleName</key><string>Short</string>", "Short", ""},
        {"<key>CFBundleDisplayName</key><integer>7</integer><key>CFBundleName</key><string>Short</string>"
         "<key>CFBundleVersion</key><integer>3</integer>",
         "Short", ""},
        {"<key>CFBundleName</key><string></string><key>CFBundleVersion</key><string></string>", "Demo", ""},
        {"", "Demo", ""},
    };
    for (const auto& c : cases) {
        const test::TempDir folder;
        const test::ProcessResult result = test::run({makeApplication(folder, "Demo", c.entries)});
        EXPECT_EQ(result.out, "Demo\n" + c.expectedName + "\n" + c.expectedVersion + "\n") << c.entries;
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
}

TEST(PlatformInfo, AProgramWithoutABundleHasItsProcessName) {
    const test::ProcessResult result = test::run({PRINT_PLATFORM_INFO});
    EXPECT_EQ(result.out, "print_platform_info\nprint_platform_info\n\n");
}

TEST(PlatformInfo, NeedsNoUserDatabase) {
    const test::ProcessResult result =
        test::run({"bwrap", "--ro-bind", "/", "/", "--tmpfs", "/etc", "--unsetenv", "HOME", "--", PRINT_PLATFORM_INFO});
    EXPECT_EQ(result.out, "print_platform_info\nprint_platform_info\n\n");
    EXPECT_EQ(result.exitStatus, 0) << result.err;
}

TEST(PlatformInfo, OfTheProcess) {
    EXPECT_EQ(Util::GetCurrentProcessID(), getpid());
    EXPECT_EQ(Util::GetNumLogicalProcessors(), static_cast<int>(std::thread::hardware_concurrency()));
    unsigned int frameCount = 99;
    Util::GetCallStack(10, &frameCount);
    EXPECT_EQ(frameCount, 0U);
}

}  // namespace
