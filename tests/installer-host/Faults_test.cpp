#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

ProcessResult runFaulty(const std::string& fault, std::vector<std::string> arguments) {
    ProcessOptions options;
    options.set = {{"PLUGIN_FAULT", fault}};
    arguments.push_back(FAULTY_BUNDLE);
    return runHost(arguments, options);
}

TEST(Faults, EachHasItsExitStatusItsMessageAndItsPlaceInTheReport) {
    const InstallRoot root;
    const struct {
        const char* fault;
        const char* option;
        int exitStatus;
        const char* message;
        const char* outcomes;  ///< of the steps, and their faults, in the report
    } cases[] = {
        {"failure bit", "--step=both", 1, "the pre-install step set the failure bit", "done, done, "},
        {"refused instance", "--step=both", 4, "made no instance", "not run, not run, "},
        {"refused interface", "--step=both", 4, "refused the installer interface 00D5FBFE-3D3D-40E2-9DCB-92ED695834F8",
         "not run, not run, "},
        {"int", "--entry=direct", 5, "an exception of type int left the pre-install step\n",
         "exception int, not run, "},
        {"runtime_error", "--step=post", 5, "type std::runtime_error left the post-install step: the disk",
         "exception std::runtime_error, "},
        {"foreign exception", "--step=both", 5, "an exception of another language",
         "exception an exception of another language, not run, "},
        {"crash", "--step=both", 5, "the pre-install step ended the process: signal 6 (Aborted)",
         "crashed signal 6 (Aborted), not run, "},
        {"forged event", "--timeout=20", 5, "the pre-install step sent an event that only the worker may send",
         "crashed {\"event\":\"finished\"}, not run, "},
        {"endless line", "--timeout=20", 5, "a line of more than 65536 bytes",
         "crashed a line of more than 65536 bytes, not run, "},
        {"hang", "--timeout=1", 9, "after 1 s: the bundle's code was in the pre-install step", "timed out, not run, "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        writeFile(root / "Library/plugin-fault", c.fault);
        const ProcessResult result =
            runFaulty(c.fault, {"run", "--product=1", "--format=json", "--root=" + root.path(), c.option});
        EXPECT_EQ(result.exitStatus, c.exitStatus);
        EXPECT_THAT(result.err, HasSubstr(c.message));
        const json report = json::parse(result.out);
        EXPECT_EQ(report["exitStatus"], c.exitStatus);
        std::string outcomes;
        for (const json& step : report["steps"]) {
            const std::string outcome = step["outcome"];
            outcomes += outcome + (step["fault"].is_null() ? "" : " " + step["fault"].get<std::string>()) + ", ";
            EXPECT_EQ(step["resultFlagsAfter"].is_null(), outcome != "done" && outcome != "exception");
        }
        EXPECT_EQ(outcomes, c.outcomes);
    }
}

/// The time-out holds without a private root, too, and nothing is left behind there.
TEST(Faults, OnTheMachineItselfAllProcessesEnd) {
    const std::pair<const char*, int> cases[] = {{"hang", 9}, {"process left", 0}};
    for (const auto& [fault, exitStatus] : cases) {
        const ProcessResult result =
            runFaulty(fault, {"run", "--product=1", "--step=pre", "--timeout=3", "--machine", "--scope=/nonexistent"});
        EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
        EXPECT_EQ(result.out.find("\nProcesses that the steps left") != std::string::npos, exitStatus == 0);
        const std::size_t last = result.err.rfind("| ", result.err.find("installer-host:"));
        const int process = std::stoi(result.err.substr(last + 2));
        EXPECT_EQ(kill(process, 0), -1) << "process " << process << " is still there: " << result.err;
        EXPECT_EQ(errno, ESRCH);
    }
}

TEST(Faults, OfABundleAreToldByCheck) {
    const ProcessResult check = runFaulty("", {"check"});
    EXPECT_EQ(check.exitStatus, 4);
    EXPECT_THAT(check.err, HasSubstr("not a usable installer plug-in"));
    EXPECT_THAT(check.out, HasSubstr("failed  interface     references are counted"));
}

}  // namespace
