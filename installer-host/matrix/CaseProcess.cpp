#include "installer-host/matrix/CaseProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include "installer-host/Plan.h"
#include "installer-host/commands/OneRun.h"
#include "installer-host/commands/Output.h"
#include "installer-host/expect/Verdict.h"
#include "installer-host/report/TextReport.h"

namespace host {

namespace {

constexpr std::size_t MOST_MESSAGES = std::size_t{64} << 10U;

/// The options of the run that the case is.
Options optionsOf(const CaseSettings& settings, const MatrixCase& one) {
    Options options = settings.options;
    options.command = Command::Run;
    options.installation.product = one.product;
    options.installation.language = one.language;
    options.root = settings.root;
    options.dryRun = true;
    return options;
}

/// Runs the case, and returns its document and its text.
Json performCase(const CaseSettings& settings, const MatrixCase& one) {
    const Plan plan(optionsOf(settings, one));
    putInstallStatus(RootFolder(plan.workedOn()), settings.list.statuses[one.status]);
    Changes everything;
    const RunResult result = performRun(plan, settings.expectation ? &everything : nullptr);
    Verdict verdict = judgeAsExpected(result, everything, settings.expectation, one.name);
    explain(verdict.judgement);
    if (settings.options.root.empty()) {
        verdict.document["root"] = nullptr;
    }
    const std::string expected = expectationText(verdict.document["expectation"]);
    const std::string text = expected + "\n" + runBody(result);
    return {{"report", std::move(verdict.document)}, {"text", text}};
}

Json performCaseOrTell(const CaseSettings& settings, const MatrixCase& one) {
    try {
        return performCase(settings, one);
    } catch (...) {
        const Judgement judgement = judgementOfException();
        explain(judgement);
        return {{"report", errorDocument(Command::Run, judgement)}, {"text", ""}};
    }
}

/// Parts this process from the user's terminal and display, and from the process that began the matrix.
void standAlone(pid_t parent, int messages) {
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        _exit(0);
    }
    const cv::Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    dup2(nothing.get(), STDIN_FILENO);
    dup2(messages, STDERR_FILENO);
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
}

/// Adds what there is to read. False at the end.
bool readMore(int fd, std::string& text) {
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = read(fd, buffer.data(), buffer.size());
        if (count <= 0) {
            return count < 0 && (errno == EAGAIN || errno == EINTR);
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

/// The report of a case whose process ended without one.
Json reportOfEnd(int status) {
    const std::string how = WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "no report came";
    return errorDocument(Command::Run, {ExitStatus::RootNotMade, "the process of this case ended: " + how});
}

}  // namespace

CaseProcess::CaseProcess(const CaseSettings& settings, std::size_t index) : index_(index) {
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (pid_ == 0) {
        standAlone(parent, messages_.write.get());
        const Json told = performCaseOrTell(settings, settings.list.cases[index]);
        _exit(cv::writeAll(report_.write.get(), jsonText(told)) == 0 ? 0 : 1);
    }
    report_.write = cv::Descriptor();
    messages_.write = cv::Descriptor();
}

CaseProcess::~CaseProcess() {
    if (pid_ > 0) {
        end(SIGTERM);
        reap(pid_);
    }
}

bool CaseProcess::hear() {
    if (messagesEnd() >= 0 && !readMore(messagesEnd(), messagesText_)) {
        messages_.read = cv::Descriptor();
    }
    messagesText_.resize(std::min(messagesText_.size(), MOST_MESSAGES));
    return readMore(reportEnd(), reportText_);
}

void CaseProcess::end(int signal) const {
    kill(pid_, signal);
}

CaseResult CaseProcess::finish() {
    const int status = reap(pid_);
    pid_ = 0;
    hear();
    CaseResult result;
    result.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started_);
    result.messages = messagesText_;
    Json told = Json::parse(reportText_, nullptr, false);
    const bool isWhole = told.is_object();
    result.report = isWhole ? std::move(told["report"]) : reportOfEnd(status);
    result.text = isWhole ? told["text"].get<std::string>() : "";
    result.status = static_cast<ExitStatus>(result.report["exitStatus"].get<int>());
    if (static_cast<int>(result.status) > SIGNALLED) {
        return {};  // somebody ended it
    }
    result.outcome = result.status == ExitStatus::Done ? CaseResult::Outcome::Passed : CaseResult::Outcome::Failed;
    return result;
}

}  // namespace host
