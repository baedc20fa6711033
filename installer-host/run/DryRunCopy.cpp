#include "installer-host/run/DryRunCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <vector>

#include "installer-host/ExitStatus.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/look/RootFolder.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/ReadOnlyView.h"
#include "installer-host/run/TreeCopy.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// Shows the user who watches how far the copying is, and lets the user end it.
class CopyWatch {
public:
    ~CopyWatch() {
        if (isShown_) {
            std::fputs("\r\033[K", stderr);
        }
    }
    CopyWatch() = default;
    CopyWatch(const CopyWatch&) = delete;
    CopyWatch& operator=(const CopyWatch&) = delete;

    void see(std::uintmax_t entries, std::uintmax_t bytes) {
        if (const int signal = takeInterruption(); signal != 0) {
            throw Interrupted{signal};
        }
        const auto now = std::chrono::steady_clock::now();
        if (now < next_ || !isWatched_) {
            return;
        }
        next_ = now + std::chrono::milliseconds(200);
        isShown_ = true;
        std::fprintf(stderr, "\rinstaller-host: copying for the dry run: %ju entries, %ju MB\033[K", entries,
                     bytes / 1000000);
    }

private:
    bool isWatched_ = isatty(STDERR_FILENO) == 1;
    bool isShown_ = false;
    std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now() + std::chrono::seconds(1);
};

void copyRoot(const std::string& root, const std::string& path) {
    const RootFolder original(root);
    if (original.privateFolders().size() < std::size(PRIVATE_FOLDERS) && access(root.c_str(), W_OK) != 0) {
        throw Failure(ExitStatus::RootNotMade,
                      "the folders of the root '" + root + "' could not be made: " + cv::errorText(errno));
    }
    const cv::Descriptor copy(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::vector<cv::Descriptor> views;
    std::vector<CopySource> sources;
    for (const RootFolder::PrivateFolder& folder : original.privateFolders()) {
        const std::string place = pathInRoot(root, folder.name);
        const cv::Descriptor& view = views.emplace_back(readOnlyView(folder.folder.get(), place));
        sources.push_back({view.isOpen() ? view.get() : folder.folder.get(), view.isOpen(), place, folder.name + 1});
    }
    CopyWatch watch;
    copyTrees(sources, copy.get(), [&](std::uintmax_t entries, std::uintmax_t bytes) { watch.see(entries, bytes); });
}

}  // namespace

DryRunCopy::DryRunCopy(const std::string& root) : folder_(root) {
    copyRoot(root, folder_.path());
}

}  // namespace host
