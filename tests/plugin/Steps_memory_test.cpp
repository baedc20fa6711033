// The two steps with every allocation failing in turn, those of the C library and of others included.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <new>
#include <string>

#include "CvBase/Mac/AutoreleasePool.h"
#include "platform/PropertyList/PropertyList.h"
#include "platform/StoreFailures.h"
#include "plugin/Steps.h"
#include "tests/support/MallocFailures.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using cv::plist::Dictionary;
using cv::plist::Value;

const std::string PREFERENCES = "/Library/Preferences/";
const std::string UPDATER = "com.corvane.updater.plist";
const std::string PRODUCT = "com.corvane.audioplugins.Ambrel.plist";
const std::string STATUS_FILE = "/Library/Application Support/Corvane/Updater/install_status.txt";

/// How a process ended that ran a step with an allocation failing.
enum Outcome { NothingFailed = 10, Passed = 11, Threw = 12, LeftDescriptors = 13, ForgotAFailure = 14 };

std::ptrdiff_t openFiles() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

Dictionary preferences(const std::string& name) {
    const auto parsed = cv::plist::parse(test::readFile(PREFERENCES + name));
    EXPECT_TRUE(parsed.root && parsed.root->dictionary() != nullptr) << name << ": " << parsed.reason;
    return parsed.root && parsed.root->dictionary() != nullptr ? *parsed.root->dictionary() : Dictionary();
}

/// What the dictionary holds, in one line.
std::string describe(const Dictionary& dictionary) {
    std::string text;
    for (const auto& [key, value] : dictionary) {
        const auto* const integer = std::get_if<cv::plist::Integer>(&value.content);
        text += key + "=" +
                (integer != nullptr ? std::to_string(integer->bits)
                 : value.text()     ? *value.text()
                                    : "?") +
                ";";
    }
    return text;
}

/// Whether all that the step was to store is stored or known to be not. A status file that the C library has no memory
/// to open cannot be read, and updates are on then.
bool isAccountedFor(void (*step)(XCodParamBlock*)) {
    const std::string updater = describe(preferences(UPDATER));
    const auto has = [&updater](const char* text) { return updater.find(text) != std::string::npos; };
    const bool hasChoice = has(has("InstallStatus") ? "UpdateInterval=2" : "UpdateInterval=0");
    const bool isStored = step == &PreInstall
                              ? has("CurrentVersion=1.00")
                              : hasChoice && describe(preferences(PRODUCT)).find("Lang=fr") != std::string::npos;
    return isStored || !cv::storeFailures().empty();
}

/// Runs the step in a process of its own with its allocation number `passes` failing.
int runFailing(void (*step)(XCodParamBlock*), unsigned long passes) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        XCodParamBlock block{};
        block.version = XCOD_BLOCK_VERSION;
        block.productCode = 5100;
        block.languageCode = 1;
        int outcome = Passed;
        const std::ptrdiff_t before = openFiles();
        test::failMalloc(passes, 1);
        try {
            const cv::AutoreleasePool pool;
            step(&block);
        } catch (const std::bad_alloc&) {
            outcome = Threw;
        }
        const bool hasFailed = test::endMallocFailures() > passes;
        outcome = openFiles() != before                        ? LeftDescriptors
                  : outcome == Passed && !isAccountedFor(step) ? ForgotAFailure
                                                               : outcome;
        _exit(hasFailed ? outcome : NothingFailed);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// The preferences of a machine that had the product before, with keys of others.
void writeOldFiles() {
    fs::remove_all(PREFERENCES);
    const auto integer = [](std::uint64_t value) { return Value{cv::plist::Integer{value, false}}; };
    const Dictionary updater{{"InstalledProducts/Ambrel/CurrentVersion", Value{std::string("0.90")}},
                             {"Others", Value{std::string("text")}},
                             {"UpdateInterval", integer(7)}};
    test::writeFile(PREFERENCES + UPDATER, cv::plist::toBinary(Value{updater}));
    test::writeFile(
        PREFERENCES + PRODUCT,
        "<plist><dict><key>Lang</key><string>de</string><key>Others</key><integer>1</integer></dict></plist>");
    test::writeFile(STATUS_FILE, "UpdatesDisabled");
    test::writeFile("/Applications/Corvane/Icon\r", "");
}

TEST(StepsMemory, AnAllocationThatFailsLosesNoFileAndNoKey) {
    using testing::MatchesRegex;
    for (void (*const step)(XCodParamBlock*) : {&PreInstall, &PostInstall}) {
        unsigned long tried = 0;
        for (int outcome = Passed; outcome != NothingFailed; ++tried) {
            writeOldFiles();
            outcome = runFailing(step, tried);
            SCOPED_TRACE("allocation " + std::to_string(tried) + " failed");
            SCOPED_TRACE(describe(preferences(UPDATER)) + " " + describe(preferences(PRODUCT)));
            ASSERT_THAT(outcome, testing::AnyOf(NothingFailed, Passed, Threw));
            ASSERT_THAT(
                describe(preferences(UPDATER)),
                MatchesRegex(
                    "(InstallStatus=Error opening "
                    "file;)?InstalledProducts/Ambrel/CurrentVersion=(0.90|1.00);Others=text;UpdateInterval=[027];"));
            ASSERT_THAT(describe(preferences(PRODUCT)), MatchesRegex("Lang=(de|fr);Others=1;"));
            for (const fs::directory_entry& entry : fs::directory_iterator(PREFERENCES)) {
                ASSERT_THAT(entry.path().filename().string(), testing::AnyOf(UPDATER, PRODUCT));
            }
        }
        std::printf("%s: %lu allocations failed, one in each run\n", step == &PreInstall ? "PreInstall" : "PostInstall",
                    tried - 1);
    }
}

}  // namespace
