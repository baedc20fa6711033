#include "installer-host/Judgement.h"

#include <gmock/gmock.h>

namespace {

using namespace host;
using Outcome = StepResult::Outcome;

TEST(Judgement, TakesTheFirstOfWhatWentWrong) {
    const struct {
        const char* name;
        Outcome outcome;
        unsigned flags;
        WorkerEnd end;
        bool isStored;
        ExitStatus status;
        const char* message;
    } cases[] = {
        {"well", Outcome::Done, 2, WorkerEnd::Finished, true, ExitStatus::Done, ""},
        {"exception", Outcome::Exception, 1, WorkerEnd::Died, false, ExitStatus::ExceptionLeftStep,
         "type T left the pre"},
        {"crash", Outcome::Crashed, 1, WorkerEnd::Died, false, ExitStatus::ExceptionLeftStep, "ended the process: T"},
        {"time-out", Outcome::TimedOut, 1, WorkerEnd::TimedOut, false, ExitStatus::TimedOut,
         "60 s: the bundle's code was in the pre"},
        {"time-out outside", Outcome::Done, 1, WorkerEnd::TimedOut, false, ExitStatus::TimedOut,
         "was in none of the steps"},
        {"crash outside", Outcome::Done, 1, WorkerEnd::Died, false, ExitStatus::BundleUnusable,
         "outside of a step: signal 6"},
        {"failure bit", Outcome::Done, 1, WorkerEnd::Finished, false, ExitStatus::StepFailed,
         "pre-install step set the failure bit"},
        {"not stored", Outcome::Done, 0, WorkerEnd::Finished, false, ExitStatus::NotStored, "not everything"},
    };
    for (const auto& c : cases) {
        Result result;
        result.steps = {{Step::PreInstall, c.outcome, 0, c.flags, "T", ""}};
        result.end = c.end;
        result.endText = "signal 6";
        if (!c.isStored) {
            result.notStored = {{"/a", "closed"}};
        }
        const Verdict verdict = judge(result);
        EXPECT_EQ(verdict.status, c.status) << c.name;
        EXPECT_THAT(verdict.message, testing::HasSubstr(c.message)) << c.name;
    }
}

TEST(Judgement, MissesOnlyWhatTheStepsStore) {
    using Kind = Unreadable::Kind;
    const struct {
        Step step;
        Kind kind;
        ExitStatus status;
    } cases[] = {
        {Step::PreInstall, Kind::Stored, ExitStatus::NotStored},
        {Step::PostInstall, Kind::Older, ExitStatus::Done},
        {Step::PostInstall, Kind::Finder, ExitStatus::NotStored},
        {Step::PreInstall, Kind::Finder, ExitStatus::Done},
    };
    for (const auto& c : cases) {
        Result result;
        result.steps = {{c.step, Outcome::Done, 0, 0, "", ""}};
        result.changes.unreadable = {{c.kind, "/a", "closed"}};
        EXPECT_EQ(judge(result).status, c.status) << longName(c.step) << ", kind " << static_cast<int>(c.kind);
    }
}

}  // namespace
