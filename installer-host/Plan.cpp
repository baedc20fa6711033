#include "installer-host/Plan.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "installer-host/look/RootFolder.h"

namespace host {

namespace {

namespace fs = std::filesystem;

std::string findBundle(const std::string& path) {
    std::error_code error;
    const fs::path found = fs::canonical(path, error);
    if (error) {
        throw Failure(ExitStatus::BundleUnusable,
                      "there is no bundle at '" + path + "': " + error.message() +
                          "\n'make' builds the plug-in as build/release/CorvaneInstall.bundle.");
    }
    if (!fs::is_regular_file(found / "Contents/Info.plist", error)) {
        throw Failure(ExitStatus::BundleUnusable,
                      "'" + path + "' is no bundle: there is no file Contents/Info.plist in it");
    }
    return found;
}

std::string findRoot(const std::string& path) {
    if (path.empty()) {
        return path;
    }
    std::error_code error;
    const fs::path found = fs::canonical(path, error);
    const RootFolder exists(error ? path : found.string());
    return found;
}

}  // namespace

Plan::Plan(Options options) : options_(std::move(options)) {
    if (options_.command != Command::Show) {
        options_.bundle = findBundle(options_.bundle);
    }
    options_.root = findRoot(options_.root);
    if (options_.dryRun) {
        copy_.emplace(options_.root.empty() ? "/" : options_.root);
    }
}

}  // namespace host
