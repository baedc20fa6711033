#include "installer-host/commands/OneRun.h"

#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <system_error>

#include "installer-host/Activity.h"
#include "installer-host/commands/Output.h"
#include "installer-host/look/BundleInfo.h"
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

}  // namespace

RunResult performRun(const Plan& plan, Changes* everything) {
    const auto started = std::chrono::system_clock::now();
    const Options& options = plan.options();
    const BundleInfo info = readBundleInfo(options.bundle);
    RootFolder root(plan.workedOn());
    root.makePrivateFolders();
    const std::vector<std::string> scope = scopeOf(plan);
    const Look before = takeLook(root, scope, nullptr);
    RunResult result = runWorker(options, &root);
    const Look after = takeLook(root, scope, &before);
    result.changes = compare(before, after, options.verbose > 0);
    if (everything != nullptr) {
        *everything = compare(before, after, true);
    }
    result.started = started;
    addMetadata(result, info);
    return result;
}

}  // namespace host
