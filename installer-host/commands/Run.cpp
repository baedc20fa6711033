#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "installer-host/Message.h"
#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/journal/RunJournal.h"
#include "installer-host/look/BundleInfo.h"
#include "installer-host/report/JsonReport.h"
#include "installer-host/report/Phrases.h"
#include "installer-host/report/TextReport.h"
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

void addMetadata(RunResult& result, const BundleInfo& info) {
    const passwd* user = getpwuid(geteuid());
    result.userId = geteuid();
    result.userName = user == nullptr ? "" : user->pw_name;
    result.bundleIdentifier = info.identifier;
    result.bundleVersion = info.version;
}

/// The journal that the user asks for, begun.
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
    say(message);
}

/// Runs the steps. A journal of a run that could not begin, and changed nothing, is forgotten.
RunResult runSteps(const Options& options, const RootFolder& root, const std::vector<std::string>& scope,
                   const Look& before, RunJournal* journal) {
    try {
        return runWorker(options, &root);
    } catch (...) {
        if (journal != nullptr) {
            journal->abandonIfUnchanged(before.tree, look(root, scope, &before).tree);
        }
        throw;
    }
}

void completeJournal(RunJournal& journal, const Tree& after, RunResult& result) {
    result.options.journal = journal.path();
    if (const std::optional<cv::Fault> fault = journal.complete(after, result.changes)) {
        result.notStored.push_back(*fault);
    }
}

}  // namespace

ExitStatus runCommand(const Options& given) {
    const Plan plan(given);
    const auto started = std::chrono::system_clock::now();
    const Options& options = plan.options();
    const BundleInfo info = readBundleInfo(options.bundle);
    RootFolder root(plan.workedOn());
    root.makePrivateFolders();
    const std::vector<std::string> scope = scopeOf(plan);
    const std::unique_ptr<RunJournal> journal = beginJournal(options, root, scope, started);
    const Look before = look(root, scope, nullptr, endIfInterrupted);
    if (journal) {
        prepareJournal(*journal, before.tree);
    }
    RunResult result = runSteps(options, root, scope, before, journal.get());
    const Look after = look(root, scope, &before);
    result.changes = compare(before, after, options.verbose);
    if (journal) {
        completeJournal(*journal, after.tree, result);
    }
    result.started = started;
    addMetadata(result, info);
    const Judgement judgement = judge(result);
    explain(judgement);
    print(options.format == Format::Text ? runText(result) : formatted(runDocument(result, judgement), options.format));
    return judgement.status;
}

}  // namespace host
