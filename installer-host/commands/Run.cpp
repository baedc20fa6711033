#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <system_error>

#include "installer-host/Plan.h"
#include "installer-host/commands/Commands.h"
#include "installer-host/commands/Output.h"
#include "installer-host/look/BundleInfo.h"
#include "installer-host/report/JsonReport.h"
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

}  // namespace

ExitStatus runCommand(const Options& given) {
    const Plan plan(given);
    const auto started = std::chrono::system_clock::now();
    const Options& options = plan.options();
    const BundleInfo info = readBundleInfo(options.bundle);
    RootFolder root(plan.workedOn());
    root.makePrivateFolders();
    const std::vector<std::string> scope = scopeOf(plan);
    const Look before = look(root, scope, nullptr, endIfInterrupted);
    RunResult result = runWorker(options, &root);
    result.changes = compare(before, look(root, scope, &before), options.verbose);
    result.started = started;
    addMetadata(result, info);
    const Judgement judgement = judge(result);
    explain(judgement);
    print(options.format == Format::Text ? runText(result) : formatted(runDocument(result, judgement), options.format));
    return judgement.status;
}

}  // namespace host
