// What the installer host's two looks at a root of 100,000 files take, beside two walks that only read every folder and
// every entry's status. A fiftieth of the files are property lists, which are read.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>

#include "benchmarks/support/Main.h"
#include "installer-host/look/Changes.h"
#include "tests/support/TempDir.h"

namespace {

constexpr int FOLDERS = 2000;
constexpr int FILES_IN_EACH = 50;
constexpr int FOLDERS_ABOVE = 20;
constexpr std::uint64_t ENTRIES = FOLDERS_ABOVE + FOLDERS + FOLDERS * FILES_IN_EACH;

/// The root, made at the first call.
const std::string& root() {
    static const test::TempDir folder;
    static const bool filled = [] {
        for (int i = 0; i < FOLDERS; ++i) {
            const std::string inner = "folder " + std::to_string(i % FOLDERS_ABOVE) + "/" + std::to_string(i) + "/";
            test::writeFile(folder / (inner + "Info.plist"), "<plist><dict><key>Key</key><true/></dict></plist>");
            for (int file = 1; file < FILES_IN_EACH; ++file) {
                test::writeFile(folder / (inner + "some file " + std::to_string(file) + ".txt"), "text");
            }
        }
        return true;
    }();
    (void)filled;
    return folder.path();
}

/// Walks the folder that is open at `fd`, which this closes, and counts what is below it.
std::uint64_t walk(int fd) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(fdopendir(fd), closedir);
    std::uint64_t count = 0;
    while (const dirent* const entry = readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        struct stat status {};
        if (name != "." && name != ".." && fstatat(fd, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
            count += 1;
            count += S_ISDIR(status.st_mode) ? walk(openat(fd, entry->d_name, O_RDONLY | O_DIRECTORY)) : 0;
        }
    }
    return count;
}

std::uint64_t walkTwice() {
    walk(open(root().c_str(), O_RDONLY | O_DIRECTORY));
    return walk(open(root().c_str(), O_RDONLY | O_DIRECTORY));
}

/// Looks twice and compares: the number of entries that were seen, when nothing differs.
std::uint64_t lookTwice() {
    const host::RootFolder folder(root());
    const host::Look before = host::look(folder, {"/"});
    const host::Look after = host::look(folder, {"/"}, &before);
    std::uint64_t count = 0;
    for (const auto& [path, one] : after.tree.folders) {
        count += path.empty() ? 0 : one.entries.size();
    }
    return host::compare(before, after, false).any() ? 0 : count;
}

[[maybe_unused]] const bool added = [] {
    const std::string name = "Look/twice-at-100000-files";
    bench::addAnswering(name, "installer-host", lookTwice, ENTRIES);
    bench::addAnswering(name, "readdir and lstat", walkTwice, ENTRIES);
    return true;
}();

}  // namespace
