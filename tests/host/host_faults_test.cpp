#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>

#include "tests/host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

ProcessResult runFaulty(const std::string& fault, std::vector<std::string> arguments,
                        const std::string& bundle = FAULTY_BUNDLE) {
    ProcessOptions options;
    options.set = {{"PLUGIN_FAULT", fault}};
    arguments.push_back(bundle);
    return runHost(arguments, options);
}

struct FaultCase {
    const char* fault;
    std::vector<std::string> more;
    int exitStatus;
    const char* message;
};

TEST(Faults, EachHasItsExitStatusAndItsMessage) {
    const InstallRoot root;
    const FaultCase cases[] = {
        {"failure bit", {}, 1, "the pre-install step set the failure bit"},
        {"refused instance", {}, 4, "made no instance"},
        {"refused interface", {}, 4, "refused the installer interface 00D5FBFE-3D3D-40E2-9DCB-92ED695834F8"},
        {"bad_alloc", {}, 5, "an exception of type std::bad_alloc left the pre-install step: std::bad_alloc"},
        {"int", {"--entry=direct"}, 5, "an exception of type int left the pre-install step\n"},
        {"runtime_error", {"--step=post"}, 5, "type std::runtime_error left the post-install step: the disk"},
        {"NSException", {}, 5, "NSException"},
        {"crash", {}, 5, "the pre-install step ended the process: signal 6 (Aborted)"},
        {"hang", {"--timeout=1"}, 9, "after 1 s: the bundle's code was in the pre-install step"},
    };
    for (const FaultCase& faulty : cases) {
        std::vector<std::string> arguments{"run", "--product=1", "--root=" + root.path()};
        arguments.insert(arguments.end(), faulty.more.begin(), faulty.more.end());
        const ProcessResult result = runFaulty(faulty.fault, arguments);
        EXPECT_EQ(result.exitStatus, faulty.exitStatus) << faulty.fault;
        EXPECT_THAT(result.err, HasSubstr(faulty.message)) << faulty.fault;
    }
}

/// What was done until a fault is reported, too, and the step behind it is not run.
TEST(Faults, AreInTheReport) {
    const InstallRoot root;
    const std::vector<std::string> arguments{"run", "--product=1", "--timeout=1", "--format=json",
                                             "--root=" + root.path()};
    const json thrown = json::parse(runFaulty("bad_alloc", arguments).out);
    EXPECT_EQ(thrown["exitStatus"], 5);
    EXPECT_EQ(thrown["steps"][0]["outcome"], "exception");
    EXPECT_EQ(thrown["steps"][0]["fault"], "std::bad_alloc");
    EXPECT_EQ(thrown["steps"][1]["outcome"], "not run");
    const json hung = json::parse(runFaulty("hang", arguments).out);
    EXPECT_EQ(hung["exitStatus"], 9);
    EXPECT_EQ(hung["steps"][0]["outcome"], "timed out");
    EXPECT_TRUE(hung["steps"][0]["resultFlagsAfter"].is_null());
    EXPECT_EQ(json::parse(runFaulty("crash", arguments).out)["steps"][0]["outcome"], "crashed");
}

/// The time-out holds without a private root, too, and nothing keeps running behind it.
TEST(Faults, AHangingStepIsEndedOnTheMachineItself) {
    const auto begin = std::chrono::steady_clock::now();
    const ProcessResult result = runFaulty("hang", {"run", "--product=1", "--timeout=1"});
    EXPECT_EQ(result.exitStatus, 9);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST(Faults, ABundleThatIsNoneIsRefused) {
    const InstallRoot root;
    const TempDir folder;
    const ProcessResult unlinked = runFaulty("", {"run", "--product=1", "--root=" + root.path()}, UNLINKED_BUNDLE);
    EXPECT_EQ(unlinked.exitStatus, 3);
    EXPECT_THAT(unlinked.err, HasSubstr("nobodyDefinesThis"));

    const std::string copy = folder / "Copy.bundle";
    fs::copy(FAULTY_BUNDLE, copy, fs::copy_options::recursive);
    const std::string propertyList = copy + "/Contents/Info.plist";
    const std::string good = readFile(propertyList);

    std::string otherType = good;
    otherType.replace(otherType.find("5CD9484B"), 8, "5CD9484C");
    writeFile(propertyList, otherType);
    const ProcessResult noFactory = runFaulty("", {"run", "--product=1", "--root=" + root.path()}, copy);
    EXPECT_EQ(noFactory.exitStatus, 4);
    EXPECT_THAT(noFactory.err, HasSubstr("registers no factory for the installer's plug-in type"));
    EXPECT_EQ(runFaulty("", {"check"}, copy).exitStatus, 4);

    writeFile(propertyList, good.substr(0, good.size() / 2));
    EXPECT_EQ(runFaulty("", {"run", "--product=1", "--root=" + root.path()}, copy).exitStatus, 3);
    const ProcessResult malformed = runFaulty("", {"check"}, copy);
    EXPECT_EQ(malformed.exitStatus, 3);
    EXPECT_THAT(malformed.out, HasSubstr("failed  bundle"));
}

TEST(Faults, CheckNamesThem) {
    const ProcessResult counts = runFaulty("", {"check"});
    EXPECT_EQ(counts.exitStatus, 4) << counts.err;
    EXPECT_THAT(counts.out, HasSubstr("failed  interface     references are counted"));
    EXPECT_THAT(counts.out, HasSubstr("failed  interface     an unknown interface is refused"));
    EXPECT_EQ(runFaulty("refused instance", {"check"}).exitStatus, 4);
    EXPECT_EQ(runFaulty("", {"check"}, UNLINKED_BUNDLE).exitStatus, 3);
}

}  // namespace
