#include "installer-host/commands/OneRun.h"

#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "installer-host/Activity.h"
#include "installer-host/Message.h"
#include "installer-host/commands/Output.h"
#include "installer-host/journal/RunJournal.h"
#include "installer-host/look/BundleInfo.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Listener.h"

namespace host {

namespace {

/// The folders to look at: all of a private root, and of the machine what the user named.
std::vector<std::string> scopeOf(const Plan& plan) {
    if (!plan.workedOn().empty()) {
        return {"/"};
    }
    std::vector<std::string> scope;
    for (const std::string& folder : plan.options().scope) {
        std::error_code error;
        const std::filesystem::path path = std::filesystem::weakly_canonical(folder, error);
        scope.push_back(error ? folder : path.string());
    }
    return scope;
}

Look takeLook(const RootFolder& root, const std::vector<std::string>& scope, const Look* before) {
    Activity activity(before == nullptr ? "looking at what is there" : "looking at what changed");
    Look seen = before == nullptr ? look(root, scope, nullptr, endIfInterrupted) : look(root, scope, before);
    std::size_t entries = 0;
    for (const auto& folder : seen.tree.folders) {
        entries += folder.second.entries.size();
    }
    activity.setResult(std::to_string(entries) + " entries");
    return seen;
}

void addMetadata(RunResult& result, const BundleInfo& info) {
    const passwd* user = getpwuid(geteuid());
    result.userId = geteuid();
    result.userName = user == nullptr ? "" : user->pw_name;
    result.bundleIdentifier = info.identifier;
    result.bundleVersion = info.version;
}

/// The journal that the user asks for, begun; null when he asks for none.
std::unique_ptr<RunJournal> beginJournal(const Options& options, const RootFolder& root,
                                         const std::vector<std::string>& scope,
                                         std::chrono::system_clock::time_point started) {
    if (options.journal.empty()) {
        return nullptr;
    }
    Journal journal;
    journal.root = options.root;
    journal.started = timeText(started);
    journal.bundle = options.bundle;
    journal.product = options.installation.product;
    journal.language = options.installation.language;
    journal.scope = scope;
    return std::make_unique<RunJournal>(options.journal, std::move(journal), root, endIfInterrupted);
}

/// Writes what stands in the root, and tells the user what the journal can put back.
void prepareJournal(RunJournal& journal, const Tree& before) {
    journal.prepare(before);
    std::string message;
    for (const std::string& sentence : journal.promises()) {
        message += (message.empty() ? "" : "\n") + sentence;
    }
    remark(Talk::Usual, message);
}

/// Runs the steps. The journal of a run that could not begin, and changed nothing, is forgotten.
RunResult runSteps(const Options& options, const RootFolder& root, const std::vector<std::string>& scope,
                   const Look& before, RunJournal* journal) {
    try {
        return runWorker(options, &root);
    } catch (...) {
        if (journal != nullptr) {
            journal->abandonIfUnchanged(before.tree, takeLook(root, scope, &before).tree);
        }
        throw;
    }
}

/// The steps are done: whatever becomes of the journal, there is a report.
void completeJournal(RunJournal& journal, const Tree& after, RunResult& result) {
    result.options.journal = journal.path();
    std::optional<cv::Fault> fault;
    try {
        fault = journal.complete(after, result.changes);
    } catch (const Interrupted&) {
        fault = cv::Fault{journal.path(), "the user ended the wait for another process that has its folder locked"};
    }
    if (fault) {
        result.notStored.push_back(*fault);
    }
}

}  // namespace

RunResult performRun(const Plan& plan, Changes* everything) {
    const auto started = std::chrono::system_clock::now();
    const Options& options = plan.options();
    const BundleInfo info = readBundleInfo(options.bundle);
    RootFolder root(plan.workedOn());
    root.makePrivateFolders();
    const std::vector<std::string> scope = scopeOf(plan);
    const std::unique_ptr<RunJournal> journal = beginJournal(options, root, scope, started);
    const Look before = takeLook(root, scope, nullptr);
    if (journal) {
        prepareJournal(*journal, before.tree);
    }
    RunResult result = runSteps(options, root, scope, before, journal.get());
    const Look after = takeLook(root, scope, &before);
    result.changes = compare(before, after, options.verbose > 0);
    if (everything != nullptr) {
        *everything = compare(before, after, true);
    }
    if (journal) {
        completeJournal(*journal, after.tree, result);
    }
    result.started = started;
    addMetadata(result, info);
    return result;
}

}  // namespace host
