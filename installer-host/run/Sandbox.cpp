#include "installer-host/run/Sandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>

#include "installer-host/look/Places.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/look/QuietOpen.h"
#include "installer-host/run/Devices.h"
#include "installer-host/run/NamespaceAdvice.h"
#include "installer-host/run/SystemCallFilter.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr const char* HOME_FOLDER = "/installer-home";
constexpr const char* PROGRAM_FOLDER = "/installer-host";
constexpr const char* BUNDLE_FOLDER = "/installer-bundle";

/// What libraries read of the machine's settings.
constexpr const char* SETTINGS[] = {"/etc/ld.so.cache", "/etc/localtime", "/etc/nsswitch.conf", "/etc/machine-id"};

/// What the bundle's code may know of the user's environment: the language and the time zone.
constexpr const char* USERS_VARIABLES[] = {"LANG",        "LANGUAGE",    "LC_ALL",     "LC_COLLATE", "LC_CTYPE",
                                           "LC_MESSAGES", "LC_MONETARY", "LC_NUMERIC", "LC_TIME",    "TZ"};

/// What the kernel shows root in /proc about itself and about other processes.
constexpr const char* HIDDEN_FILES[] = {"kcore", "keys", "kmsg", "latency_stats", "sched_debug", "timer_list"};
constexpr const char* HIDDEN_FOLDERS[] = {"acpi", "asound", "scsi"};

[[noreturn]] void fail(const std::string& what) {
    throw Failure(ExitStatus::RootNotMade, "the private root could not be made: " + what);
}

/// A file in memory that holds `text`, for a child to read from.
cv::Descriptor memoryFile(const std::string& text) {
    cv::Descriptor file(memfd_create("installer-host", MFD_CLOEXEC));
    int error = file.isOpen() ? cv::writeAll(file.get(), text) : errno;
    if (error == 0 && lseek(file.get(), 0, SEEK_SET) != 0) {
        error = errno;
    }
    if (error != 0) {
        fail(cv::errorText(error));
    }
    return file;
}

std::string userName() {
    const passwd* user = getpwuid(getuid());
    return user == nullptr ? "installer" : user->pw_name;
}

/// Whether the program `name` is on PATH.
bool isInstalled(const std::string& name) {
    const char* folders = std::getenv("PATH");
    std::string rest = folders == nullptr ? "/usr/local/bin:/usr/bin:/bin" : folders;
    while (!rest.empty()) {
        const std::string folder = rest.substr(0, rest.find(':'));
        rest.erase(0, folder.size() + 1);
        if (access((folder + "/" + name).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

bool belongsToAnother(int folder, const char* name) {
    struct stat status {};
    return fstatat(folder, name, &status, AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW) == 0 && status.st_uid != 0;
}

/// Whether the folder or something in it belongs to another user than root.
bool hasAnotherOwner(int folder) {
    if (belongsToAnother(folder, "")) {
        return true;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(
        fdopendir(openQuietly(folder, ".", O_RDONLY | O_DIRECTORY).release()), closedir);
    while (const dirent* entry = entries == nullptr ? nullptr : readdir(entries.get())) {
        if (std::string(entry->d_name) != ".." && belongsToAnother(folder, entry->d_name)) {
            return true;
        }
    }
    return false;
}

/// Whether root is to write what belongs to another user, which it may by its capabilities alone.
bool needsCapabilities(const RootFolder* root) {
    return geteuid() == 0 && root != nullptr &&
           std::any_of(root->privateFolders().begin(), root->privateFolders().end(),
                       [](const auto& folder) { return hasAnotherOwner(folder.folder.get()); });
}

/// The namespaces and the rights. In a user namespace, root has no rights over other users' files.
std::vector<std::string> isolation(const RootFolder* root) {
    if (needsCapabilities(root)) {
        return {"--unshare-ipc",    "--unshare-pid", "--unshare-net", "--unshare-uts", "--unshare-cgroup-try",
                "--cap-drop",       "ALL",           "--cap-add",     "CAP_CHOWN",     "--cap-add",
                "CAP_DAC_OVERRIDE", "--cap-add",     "CAP_FOWNER"};
    }
    return {"--unshare-all", "--unshare-user", "--disable-userns", "--cap-drop", "ALL"};
}

/// Whether something else is seen inside at the first folder of `path`.
bool isTaken(const std::string& path) {
    const std::string top = path.substr(0, path.find('/', 1));
    const auto isTop = [&](const char* folder) { return top == folder; };
    return std::any_of(std::begin(SYSTEM_FOLDERS), std::end(SYSTEM_FOLDERS), isTop) ||
           std::any_of(std::begin(PRIVATE_FOLDERS), std::end(PRIVATE_FOLDERS), isTop) || top == "/dev" ||
           top == "/proc" || top == "/etc" || top == HOME_FOLDER || top == PROGRAM_FOLDER;
}

cv::Descriptor openNamed(const std::string& path) {
    return cv::Descriptor(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

/// The name by which programs load one of the project's libraries. Of CvBase's there are none when it was built static.
std::string libraryName(const char* name) {
    return std::string("lib") + name + ".so." INSTALLER_HOST_LIB_VERSION;
}

}  // namespace

Sandbox::Sandbox(const RootFolder* root) : root_(root), hasDevices_(canProtectDevices()), filter_(systemCallFilter()) {
    requireBubblewrap();
    add({"bwrap", "--die-with-parent", "--new-session"});
    add(isolation(root));
    add({"--clearenv"});
    addSystem();
    addDevices();
    addProcesses();
    add({"--perms", "0700", "--size", std::to_string(SANDBOX_TEMPORARY_MEBIBYTES << 20U), "--tmpfs", HOME_FOLDER});
    if (root != nullptr) {
        for (const RootFolder::PrivateFolder& folder : root->privateFolders()) {
            add({"--bind-fd", std::to_string(folder.folder.get()), folder.name});
        }
    }
    setVariable("PATH", "/usr/local/bin:/usr/bin:/bin");
    for (const char* name : {"HOME", "TMPDIR", "TMP", "TEMP"}) {
        setVariable(name, HOME_FOLDER);
    }
    for (const char* name : USERS_VARIABLES) {
        if (const char* value = std::getenv(name)) {
            setVariable(name, value);
        }
    }
}

void Sandbox::add(const std::vector<std::string>& arguments) {
    arguments_.insert(arguments_.end(), arguments.begin(), arguments.end());
}

void Sandbox::addFile(const std::string& text, const std::string& place) {
    add({"--perms", "0644"});
    addOpen("--ro-bind-data", memoryFile(text), place);
}

void Sandbox::addOpen(const char* option, cv::Descriptor file, const std::string& place) {
    add({option, std::to_string(file.get()), place});
    open_.push_back(std::move(file));
}

void Sandbox::addSystem() {
    for (const std::string folder : SYSTEM_FOLDERS) {
        std::error_code error;
        if (fs::is_symlink(folder, error)) {
            add({"--symlink", fs::read_symlink(folder).string(), folder});
        } else if (fs::is_directory(folder, error)) {
            add({"--ro-bind", folder, folder});
        }
    }
    for (const char* file : SETTINGS) {
        add({"--ro-bind-try", file, file});
    }
    const std::string uid = std::to_string(getuid());
    const std::string gid = std::to_string(getgid());
    addFile(userName() + ":x:" + uid + ":" + gid + "::" + HOME_FOLDER + ":/bin/sh\n", "/etc/passwd");
    addFile("installer:x:" + gid + ":\n", "/etc/group");
}

/// What bubblewrap makes read-only cannot be opened any more.
void Sandbox::addDevices() {
    add({"--dev", "/dev", "--remount-ro", "/dev/tty", "--remount-ro", "/dev/pts"});
    for (const char* device : DEVICES) {
        if (!hasDevices_) {
            add({"--remount-ro", device});
        }
    }
    add({"--size", std::to_string(SANDBOX_TEMPORARY_MEBIBYTES << 20U), "--tmpfs", "/dev/shm", "--remount-ro", "/dev"});
}

/// All but the first process inside, which is bubblewrap's own: through /proc/1/exe root could change the machine's
/// program, its mode for example.
void Sandbox::addProcesses() {
    add({"--proc", "/proc", "--tmpfs", "/proc/1", "--remount-ro", "/proc/1"});
    const auto isThere = [](const std::string& path) { return access(path.c_str(), F_OK) == 0; };
    for (const std::string name : HIDDEN_FILES) {
        if (isThere("/proc/" + name)) {
            add({"--ro-bind", "/dev/null", "/proc/" + name});
        }
    }
    for (const std::string name : HIDDEN_FOLDERS) {
        if (isThere("/proc/" + name)) {
            add({"--tmpfs", "/proc/" + name, "--remount-ro", "/proc/" + name});
        }
    }
    add({"--remount-ro", "/proc"});
}

std::string Sandbox::showBundle(const std::string& path) {
    cv::Descriptor bundle = openNamed(path);
    if (!bundle.isOpen()) {
        throw Failure(ExitStatus::BundleUnusable,
                      "the bundle '" + path + "' cannot be opened: " + cv::errorText(errno));
    }
    std::string place = isTaken(path) ? BUNDLE_FOLDER + ("/" + fs::path(path).filename().string()) : path;
    addOpen("--ro-bind-fd", std::move(bundle), place);
    return place;
}

std::string Sandbox::showWorker(const std::string& program) {
    std::string place = std::string(PROGRAM_FOLDER) + "/installer-host-worker";
    cv::Descriptor file = openNamed(program);
    if (!file.isOpen()) {
        fail("'" + program + "': " + cv::errorText(errno));
    }
    addOpen("--ro-bind-fd", std::move(file), place);
    const fs::path prefix = fs::path(program).parent_path().parent_path();
    for (const char* folder : {INSTALLER_HOST_LIB_FOLDER, "lib"}) {
        const auto show = [&](const std::string& name) {
            cv::Descriptor found(open((prefix / folder / name).c_str(), O_PATH | O_CLOEXEC));
            const bool isThere = found.isOpen();
            if (isThere) {
                addOpen("--ro-bind-fd", std::move(found), std::string(PROGRAM_FOLDER) + "/" + name);
            }
            return isThere;
        };
        if (show(libraryName("CvPlatform"))) {
            show(libraryName("CvBase"));
            show(libraryName("CvBaseUINative"));
            show("CvPlatform");
            setVariable("LD_LIBRARY_PATH", PROGRAM_FOLDER);
            break;
        }
    }
    return place;
}

void Sandbox::setVariable(const std::string& name, const std::string& value) {
    add({"--setenv", name, value});
}

bool Sandbox::prepare() const {
    const bool isDone = !hasDevices_ || protectDevices();
    if (!isDone) {
        std::perror("the devices cannot be made read-only");
    }
    return isDone;
}

std::vector<std::string> Sandbox::wrap(const std::vector<std::string>& command, int info, int go) const {
    std::vector<std::string> wrapped = arguments_;
    const std::vector<std::string> end{"--seccomp",
                                       std::to_string(filter_.get()),
                                       "--info-fd",
                                       std::to_string(info),
                                       "--block-fd",
                                       std::to_string(go),
                                       "--chdir",
                                       "/",
                                       "--remount-ro",
                                       "/",
                                       "--"};
    wrapped.insert(wrapped.end(), end.begin(), end.end());
    wrapped.insert(wrapped.end(), command.begin(), command.end());
    return wrapped;
}

std::vector<int> Sandbox::descriptors() const {
    std::vector<int> all{filter_.get()};
    for (const cv::Descriptor& file : open_) {
        all.push_back(file.get());
    }
    for (std::size_t i = 0; root_ != nullptr && i < root_->privateFolders().size(); ++i) {
        all.push_back(root_->privateFolders()[i].folder.get());
    }
    return all;
}

Failure sandboxRefused(const std::string& said) {
    const std::string what = "the private root could not be made" + (said.empty() ? "" : ": " + said);
    if (said.find("Unknown option") != std::string::npos) {
        return {ExitStatus::RootNotMade, "bubblewrap (bwrap) is too old here: " + said,
                "Install one that does, such as Debian 12's: sudo apt-get install bubblewrap"};
    }
    return {ExitStatus::RootNotMade, what, namespaceAdvice()};
}

void requireBubblewrap() {
    if (!isInstalled("bwrap")) {
        throw Failure(ExitStatus::RootNotMade,
                      "a private root needs bubblewrap (the program bwrap), which is not installed",
                      "Install it with: sudo apt-get install bubblewrap");
    }
}

}  // namespace host
