#include "CvBase/Util/PlatformInfo.h"

#include "tests/support/Text.h"

namespace {

using namespace test;

TEST(PlatformInfo, TheNamesAndTheVersionAreTheMainBundles) {
    // clang-format off
    const struct { std::string entries, expectedName, expectedVersion; } cases[] = {
        {"<key>CFBundleDisplayName</key><string>Shown \xC3\xA9</string><key>CFBundleName</key><string>Short</string>"
         "<key>CFBundleVersion</key><string>1.2.3</string>", "Shown \xC3\xA9", "1.2.3"},
        {"<key>CFBundleDisplayName</key><string></string><key>CFBundleName</key><string>Short</string>", "Short", ""},
        {"<key>CFBundleDisplayName</key><integer>7</integer><key>CFBundleName</key><string>Short</string>"
         "<key>CFBundleVersion</key><integer>3</integer>", "Short", ""},
        {"<key>CFBundleName</key><string></string><key>CFBundleVersion</key><string></string>", "Demo", ""},
        {"", "Demo", ""},
    };
    // clang-format on
    for (const auto& c : cases) {
        const TempDir folder;
        const std::string bundle = folder / "Demo.app";
        writeFile(
            bundle + "/Contents/Info.plist",
            R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + c.entries + "</dict></plist>");
        std::filesystem::create_directory(bundle + "/Contents/Linux");
        std::filesystem::copy_file(PRINT_PLATFORM_INFO, bundle + "/Contents/Linux/Demo");
        const ProcessResult result = run({bundle + "/Contents/Linux/Demo"});
        EXPECT_EQ(result.out, "Demo\n" + c.expectedName + "\n" + c.expectedVersion + "\n") << c.entries;
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_EQ(result.err, "");
    }
}

TEST(PlatformInfo, AProgramWithoutABundleHasItsProcessNameAndNeedsNoUserDatabase) {
    std::vector<std::string> command = startable({PRINT_PLATFORM_INFO});
    const char* const surroundings[] = {"bwrap", "--ro-bind", "/", "/", "--tmpfs", "/etc", "--unsetenv", "HOME", "--"};
    command.insert(command.begin(), std::begin(surroundings), std::end(surroundings));
    const ProcessResult result = run(command);
    EXPECT_EQ(result.out, "print_platform_info\nprint_platform_info\n\n");
    EXPECT_EQ(result.exitStatus, 0) << result.err;
}

TEST(PlatformInfo, OfTheProcess) {
    EXPECT_EQ(Util::GetNumLogicalProcessors(), static_cast<int>(std::thread::hardware_concurrency()));
    unsigned int frameCount = 99;
    Util::GetCallStack(10, &frameCount);
    EXPECT_EQ(frameCount, 0U);
}

}  // namespace
