#include "installer-host/run/DryRunCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <iterator>
#include <vector>

#include "installer-host/Activity.h"
#include "installer-host/ExitStatus.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/look/RootFolder.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/ReadOnlyView.h"
#include "installer-host/run/TreeCopy.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// Shows the user how far the copying is, and lets the user end it.
void watchCopy(Activity& activity, std::uintmax_t entries, std::uintmax_t bytes) {
    constexpr std::uintmax_t MEGABYTE = 1000000;
    if (const int signal = takeInterruption(); signal != 0) {
        throw Interrupted{signal};
    }
    activity.show("copying for the dry run: " + std::to_string(entries) + " entries, " +
                  std::to_string(bytes / MEGABYTE) + " MB");
}

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
    Activity activity("copying for the dry run");
    copyTrees(sources, copy.get(),
              [&](std::uintmax_t entries, std::uintmax_t bytes) { watchCopy(activity, entries, bytes); });
}

}  // namespace

DryRunCopy::DryRunCopy(const std::string& root) : folder_(root) {
    copyRoot(root, folder_.path());
}

}  // namespace host
