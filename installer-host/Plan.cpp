#include "installer-host/Plan.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "installer-host/look/RootFolder.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

namespace fs = std::filesystem;

/// What is wrong with the file or folder of a bundle that should be there; empty when nothing is.
std::string problemOf(const fs::path& path, fs::file_type wanted) {
    const bool isFolder = wanted == fs::file_type::directory;
    // A FIFO would keep who opens it waiting.
    const cv::Descriptor opened(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const int error = opened.isOpen() ? 0 : errno;
    std::error_code ignored;
    const fs::file_type found = fs::status(path, ignored).type();
    const bool isOther = found != fs::file_type::not_found && found != fs::file_type::none && found != wanted;
    if (isOther) {
        return isFolder ? "is not a folder" : "is not a file";
    }
    return error == 0 ? "" : "cannot be read: " + cv::errorText(error);
}

std::string findBundle(const std::string& path) {
    std::error_code error;
    const fs::path found = fs::canonical(path, error);
    if (error) {
        throw Failure(ExitStatus::BundleUnusable, "there is no bundle at '" + path + "': " + error.message(),
                      "'make' builds the plug-in as build/release/CorvaneInstall.bundle.");
    }
    const std::pair<fs::path, fs::file_type> parts[] = {
        {found, fs::file_type::directory},
        {found / "Contents", fs::file_type::directory},
        {found / "Contents/Info.plist", fs::file_type::regular},
    };
    for (const auto& [part, type] : parts) {
        if (const std::string problem = problemOf(part, type); !problem.empty()) {
            throw Failure(ExitStatus::BundleUnusable, "this is not a bundle: '" + part.string() + "' " + problem);
        }
    }
    return found;
}

/// The folders of a private root must not be the machine's own.
void refuseMachine(const std::string& option, const fs::path& root) {
    for (const fs::path& own : {fs::path("/"), fs::path("/Library"), fs::path("/Applications")}) {
        std::error_code ignored;
        if (fs::equivalent(root / own.relative_path(), own, ignored)) {
            throw Failure(ExitStatus::Usage, option + ": '" + root.string() + "' is the machine itself",
                          "Say --machine to work there.");
        }
    }
}

std::string findRoot(const std::string& option, const std::string& path) {
    if (path.empty()) {
        return path;
    }
    std::error_code error;
    const fs::path found = fs::canonical(path, error);
    const RootFolder exists(error ? path : found.string());
    refuseMachine(option, found);
    return found;
}

}  // namespace

Plan::Plan(Options options) : options_(std::move(options)) {
    if (options_.command != Command::Show && options_.command != Command::Undo) {
        options_.bundle = findBundle(options_.bundle);
    }
    options_.root = findRoot("--root", options_.root);
    options_.diff = findRoot("--diff", options_.diff);
    for (std::string& folder : options_.scope) {
        folder = fs::absolute(folder).lexically_normal();
    }
    if (options_.dryRun && options_.command == Command::Run) {
        copy_.emplace(options_.root.empty() ? "/" : options_.root);
    }
}

}  // namespace host
