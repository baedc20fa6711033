#include "installer-host/Judgement.h"

#include <gmock/gmock.h>

namespace {

using namespace host;
using Outcome = StepResult::Outcome;

/// In every case a step also set the failure bit, and something was not stored.
TEST(Judgement, TakesTheFirstOfWhatWentWrong) {
    const struct {
        Outcome outcome;
        WorkerEnd end;
        ExitStatus status;
        const char* message;
    } cases[] = {
        {Outcome::Exception, WorkerEnd::TimedOut, ExitStatus::ExceptionLeftStep, "type T left the pre-install step"},
        {Outcome::Done, WorkerEnd::TimedOut, ExitStatus::TimedOut, "60 s: the bundle's code was in no step"},
        {Outcome::Done, WorkerEnd::Died, ExitStatus::BundleUnusable, "outside a step: signal 6"},
        {Outcome::Done, WorkerEnd::Finished, ExitStatus::StepFailed, "the pre-install step set the failure bit"},
    };
    for (const auto& c : cases) {
        RunResult result;
        result.steps = {{Step::PreInstall, c.outcome, 0, 1, "T", "", {}}};
        result.end = c.end;
        result.endText = "signal 6";
        result.notStored = {{"/a", "closed"}};
        EXPECT_EQ(judge(result).status, c.status) << c.message;
        EXPECT_THAT(judge(result).message, testing::HasSubstr(c.message));
    }
}

TEST(Judgement, MindsWhatWasNotSeenAndWhatChanged) {
    const struct {
        Unreadable::Kind kind;
        bool isUnreadable, changed, asked;
        ExitStatus status;
    } cases[] = {
        {Unreadable::Kind::Older, true, false, false, ExitStatus::Done},
        {Unreadable::Kind::Stored, true, true, true, ExitStatus::NotStored},
        {Unreadable::Kind::Finder, true, false, false, ExitStatus::NotStored},
        {Unreadable::Kind::Unseen, true, false, false, ExitStatus::NotStored},
        {Unreadable::Kind::Older, true, true, true, ExitStatus::SomethingChanged},
        {Unreadable::Kind::Older, false, false, true, ExitStatus::Done},
        {Unreadable::Kind::Older, false, true, false, ExitStatus::Done},
    };
    for (const auto& c : cases) {
        RunResult result;
        result.options.changesExit = c.asked;
        result.changes.entries.resize(c.changed ? 1 : 0);
        if (c.isUnreadable) {
            result.changes.unreadable = {{c.kind, "/a", "closed"}};
        }
        EXPECT_EQ(judge(result).status, c.status) << static_cast<int>(c.kind) << c.changed << c.asked;
    }
}

}  // namespace
