// A plug-in that attacks the machine it runs on. The file Contents/Resources/attack in its bundle names the attack;
// what it does goes to /Library/results, a line for each try: "refused NAME" or "HARM NAME: WHAT". attack.py drives it.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/sched.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugin/InstallerInterface.h"
#include "plugin/Steps.h"

namespace {

namespace fs = std::filesystem;

const std::string ESCAPES = "\x1b]0;owned\x07\x1b[2J\xc2\x9b\x9b\x7f\r";

fs::path ownBundle() {
    Dl_info code{};
    dladdr(reinterpret_cast<const void*>(&ownBundle), &code);
    return fs::path(code.dli_fname).parent_path().parent_path().parent_path();
}

/// What the bundle's own file says: the attack, and what it is to work with.
std::vector<std::string> order() {
    std::ifstream file(ownBundle() / "Contents/Resources/attack");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    lines.resize(std::max<std::size_t>(lines.size(), 4));
    return lines;
}

void tell(const std::string& name, bool didHarm, const std::string& what = "") {
    std::ofstream results("/Library/results", std::ios::app);
    results << (didHarm ? "HARM " : "refused ") << name << (what.empty() ? "" : ": " + what) << std::endl;
}

/// Tells what a system call came to that is to fail, and with one of these errors where any are given.
void tellCall(const std::string& name, long result, const std::vector<int>& expected = {}) {
    const int error = errno;
    const bool isExpected = expected.empty() || std::find(expected.begin(), expected.end(), error) != expected.end();
    tell(name, result >= 0 || !isExpected, result >= 0 ? "succeeded" : std::strerror(error));
}

/// Whether a copy of this process, which may be ended, answers true.
bool inACopy(const std::function<bool()>& attempt) {
    const pid_t copy = fork();
    if (copy == 0) {
        _exit(attempt() ? 0 : 1);
    }
    int status = 1;
    waitpid(copy, &status, 0);
    return copy > 0 && status == 0;
}

void attackMounts() {
    tellCall("mount: a tmpfs on /usr", mount("none", "/usr", "tmpfs", 0, nullptr));
    tellCall("mount: the root writable again", mount(nullptr, "/", nullptr, MS_REMOUNT | MS_BIND, nullptr));
    tellCall("mount: /usr writable again", mount(nullptr, "/usr", nullptr, MS_REMOUNT | MS_BIND, nullptr));
    tellCall("mount: off /proc/1", umount2("/proc/1", MNT_DETACH));
    tellCall("mount: off /proc", umount2("/proc", MNT_DETACH));
    tellCall("mount: the machine's disk", mount("/dev/vda", "/Library", "ext4", 0, nullptr));
    tellCall("chroot", chroot("/Library"), {EPERM});
    const dev_t disk = makedev(254, 0);
    tellCall("mknod: a disk", mknod("/Library/disk", S_IFBLK | 0600, disk));
}

void attackNamespaces() {
    tell("namespaces: a new user namespace by unshare", inACopy([] { return unshare(CLONE_NEWUSER) == 0; }));
    for (const int flag : {CLONE_NEWUSER, CLONE_NEWNS, CLONE_NEWPID, CLONE_NEWNET}) {
        tell("namespaces: clone with " + std::to_string(flag), inACopy([flag] {
                 const long child = syscall(SYS_clone, static_cast<unsigned long>(flag | SIGCHLD), 0, 0, 0, 0);
                 if (child == 0) {
                     _exit(0);
                 }
                 return child > 0;
             }));
    }
    clone_args arguments{};
    arguments.flags = CLONE_NEWUSER;
    arguments.exit_signal = SIGCHLD;
    const long child = syscall(SYS_clone3, &arguments, sizeof arguments);
    if (child == 0) {
        _exit(0);
    }
    tellCall("namespaces: clone3", child, {ENOSYS});
    const int own = open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC);
    tellCall("namespaces: setns", setns(own, 0), {EPERM});
}

/// Files that give whoever runs them the rights of whoever runs the host.
void attackSpecialFiles() {
    const char* const path = "/Library/special";
    std::ofstream(path) << "#!/bin/sh\n";
    for (const mode_t mode : {mode_t{04755}, mode_t{02755}}) {
        tellCall("setuid: chmod", chmod(path, mode), {EPERM});
        tellCall("setuid: fchmodat", fchmodat(AT_FDCWD, path, mode, 0), {EPERM});
        tellCall("setuid: open", open("/Library/special1", O_CREAT | O_WRONLY, mode), {EPERM});
        tellCall("setuid: open without a name", open("/Library", O_TMPFILE | O_WRONLY, mode), {EPERM});
        tellCall("setuid: mknod", mknod("/Library/special2", S_IFREG | mode, 0), {EPERM});
        std::uint64_t how[3] = {O_CREAT | O_WRONLY, mode, 0};
        tellCall("setuid: openat2", syscall(SYS_openat2, AT_FDCWD, "/Library/special3", how, sizeof how), {ENOSYS});
    }
}

void attackProcesses() {
    tellCall("ptrace: of itself by its parent", ptrace(PTRACE_TRACEME, 0, nullptr, nullptr), {EPERM});
    tellCall("ptrace: of the first process", ptrace(PTRACE_SEIZE, 1, nullptr, nullptr), {EPERM});
    struct stat status {};
    for (const char* name : {"exe", "root", "cwd", "fd", "ns", "mem", "environ", "maps"}) {
        const std::string path = std::string("/proc/1/") + name;
        tell(path, stat(path.c_str(), &status) == 0, "is seen");
    }
    if (stat("/proc/1/exe", &status) == 0) {
        tellCall("/proc/1/exe: its mode", chmod("/proc/1/exe", status.st_mode & 07777U));
    }
    for (const fs::directory_entry& process : fs::directory_iterator("/proc")) {
        const std::string name = process.path().filename();
        if (std::isdigit(static_cast<unsigned char>(name[0])) != 0 && std::stoi(name) != getpid() && name != "1") {
            tell("another process: " + name, true, "is seen");
        }
    }
}

void attackSystemCalls() {
    const struct {
        const char* name;
        long number;
    } calls[] = {
        {"bpf", SYS_bpf},
        {"keyctl", SYS_keyctl},
        {"add_key", SYS_add_key},
        {"request_key", SYS_request_key},
        {"perf_event_open", SYS_perf_event_open},
        {"userfaultfd", SYS_userfaultfd},
        {"io_uring_setup", SYS_io_uring_setup},
        {"process_vm_readv", SYS_process_vm_readv},
        {"process_vm_writev", SYS_process_vm_writev},
        {"kcmp", SYS_kcmp},
        {"pidfd_getfd", SYS_pidfd_getfd},
        {"open_by_handle_at", SYS_open_by_handle_at},
        {"name_to_handle_at", SYS_name_to_handle_at},
        {"fanotify_init", SYS_fanotify_init},
        {"init_module", SYS_init_module},
        {"finit_module", SYS_finit_module},
        {"delete_module", SYS_delete_module},
        {"kexec_load", SYS_kexec_load},
        {"reboot", SYS_reboot},
        {"swapon", SYS_swapon},
        {"swapoff", SYS_swapoff},
        {"acct", SYS_acct},
        {"quotactl", SYS_quotactl},
        {"syslog", SYS_syslog},
        {"sethostname", SYS_sethostname},
        {"settimeofday", SYS_settimeofday},
        {"adjtimex", SYS_adjtimex},
        {"pivot_root", SYS_pivot_root},
        {"fsopen", SYS_fsopen},
        {"fspick", SYS_fspick},
        {"open_tree", SYS_open_tree},
        {"move_mount", SYS_move_mount},
        {"mbind", SYS_mbind},
        {"move_pages", SYS_move_pages},
        {"memfd_create", SYS_memfd_create},
        {"shmget", SYS_shmget},
        {"vhangup", SYS_vhangup},
        {"a call of the future", 599},
    };
    for (const auto& call : calls) {
        tellCall(std::string("system call ") + call.name, syscall(call.number, 0, 0, 0, 0, 0, 0), {EPERM, ENOSYS});
    }
    constexpr auto HIGH_BIT = static_cast<unsigned long>(std::uint64_t{1} << 40U);
    tellCall("system call personality", syscall(SYS_personality, 0x0040000), {EPERM});
    for (int fd = 0; fd < 64; ++fd) {
        if (fcntl(fd, F_GETFD) >= 0) {
            const char typed = 'x';
            tellCall("ioctl TIOCSTI on " + std::to_string(fd), ioctl(fd, TIOCSTI, &typed), {EPERM});
            tellCall("ioctl TIOCSTI with a high bit on " + std::to_string(fd),
                     syscall(SYS_ioctl, fd, TIOCSTI | HIGH_BIT, &typed), {EPERM});
        }
    }
}

#if defined(__x86_64__)
/// The calls of 32-bit Intel, and of 64-bit Intel with short pointers: both have other numbers.
void attackOtherProcessorsCalls() {
    tell("system call of another processor: int 0x80", inACopy([] {
             long result = 20;  // getpid
             asm volatile("int $0x80" : "+a"(result) : : "r8", "r9", "r10", "r11", "memory");
             return result > 0;
         }));
    tell("system call of another processor: x32", inACopy([] {
             constexpr long X32 = 0x40000000;
             errno = 0;
             return syscall(X32 + SYS_getpid) > 0 || errno == ENOSYS;
         }));
}
#else
void attackOtherProcessorsCalls() {}
#endif

/// Whether the kernel shows that somebody listens at the abstract socket.
bool isSeen(const std::string& abstractName) {
    std::ifstream sockets("/proc/net/unix");
    for (std::string line; std::getline(sockets, line);) {
        if (line.find("@" + abstractName) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void attackNetwork(const std::vector<std::string>& order) {
    tell("network: the machine's sockets", isSeen(order[1]), "are seen");
    for (const int family : {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK, AF_PACKET, AF_VSOCK}) {
        tellCall("socket: family " + std::to_string(family), socket(family, SOCK_STREAM, 0));
    }
    int pair[2] = {-1, -1};
    tellCall("socket: a pair of datagram sockets, which send anywhere", socketpair(AF_UNIX, SOCK_DGRAM, 0, pair));
    // Abstract names and names in the root, on every socket that is there or can be made.
    const int fresh = socket(AF_UNIX, SOCK_STREAM, 0);
    for (const std::string& name : {std::string(1, '\0') + order[1], std::string("/Library/listener")}) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        for (const int fd : {fresh, pair[0]}) {
            tellCall("connect: " + std::string(name.c_str() + (name[0] == '\0' ? 1 : 0)),
                     connect(fd, reinterpret_cast<const sockaddr*>(&address), size));
        }
    }
}

void attackDescriptors() {
    for (int fd = 0; fd < 1024; ++fd) {
        struct stat status {};
        if (fstat(fd, &status) != 0) {
            continue;
        }
        const std::string name = "descriptor " + std::to_string(fd);
        tellCall(name + ": the folder above", openat(fd, "..", O_PATH));
        tell(name, !S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode), "is neither pipe nor socket");
        if (S_ISCHR(status.st_mode) || S_ISREG(status.st_mode)) {
            tellCall(name + ": its mode", fchmod(fd, status.st_mode & 07777U));
        }
    }
}

void attackEnvironment() {
    const std::vector<std::string> known{
        "PATH", "HOME", "TMPDIR", "TMP", "TEMP", "TZ", "PWD", "CV_ALERT_SOCKET", "LD_LIBRARY_PATH"};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string name(*variable, std::strcspn(*variable, "="));
        const bool isKnown = std::find(known.begin(), known.end(), name) != known.end() ||
                             name.compare(0, 4, "LANG") == 0 || name.compare(0, 3, "LC_") == 0;
        tell("environment: " + name, !isKnown, "was passed on");
    }
}

bool isIn(const std::string& path, const std::string& folder) {
    return (path + "/").compare(0, folder.size() + 1, folder + "/") == 0;
}

bool mayWrite(const std::string& path) {
    const auto holds = [&](const char* own) { return isIn(path, own); };
    const std::vector<const char*> own{"/Library", "/Applications", "/installer-home", "/dev/shm"};
    return std::any_of(own.begin(), own.end(), holds);
}

/// Whether it is the system's, or the code's own: one of its places, its bundle, or on the way there.
bool maySee(const std::string& path) {
    const auto holds = [&](const char* shown) { return isIn(path, shown); };
    const std::vector<const char*> shown{
        "/usr", "/bin", "/sbin", "/lib",     "/lib32",        "/lib64",          "/libx32",
        "/etc", "/dev", "/proc", "/Library", "/Applications", "/installer-home", "/installer-host"};
    return std::any_of(shown.begin(), shown.end(), holds) || isIn(path, ownBundle()) || isIn(ownBundle(), path);
}

/// Tries to change what there is at `path`, and to add something where it is a folder. Answers what was possible.
std::string tryToChange(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || S_ISLNK(status.st_mode)) {
        return "";
    }
    if (chmod(path.c_str(), status.st_mode & 07777U) == 0) {
        return "its mode can be changed";
    }
    if (utimensat(AT_FDCWD, path.c_str(), nullptr, 0) == 0) {
        return "its times can be changed";
    }
    if (S_ISREG(status.st_mode)) {
        const int file = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return file >= 0 ? "it can be written to" : "";
    }
    const int file =
        S_ISDIR(status.st_mode) ? open((path + "/intruder").c_str(), O_CREAT | O_WRONLY | O_EXCL, 0600) : -1;
    return file >= 0 ? "a file can be made in it" : "";
}

void attackPlaces() {
    std::size_t places = 0, settings = 0;
    std::error_code error;
    for (fs::recursive_directory_iterator entries("/", fs::directory_options::skip_permission_denied, error), end;
         entries != end; entries.increment(error)) {
        const std::string path = entries->path();
        ++places;
        settings += path.compare(0, 5, "/etc/") == 0 ? 1U : 0U;
        if (!maySee(path)) {
            tell("place " + path, true, "is seen");
        }
        if (!mayWrite(path)) {
            const std::string change = tryToChange(path);
            if (!change.empty()) {
                tell("place " + path, true, change);
            }
        }
    }
    tell("places: all " + std::to_string(places), places < 100 || error, error ? error.message() : "so few are seen");
    tell("places: in /etc", settings > 6, std::to_string(settings) + " are seen");
    tell("place /", !tryToChange("/").empty(), "can be changed");
    for (const char* path : {"/proc/sys/kernel/core_pattern", "/proc/sysrq-trigger", "/proc/sys/kernel/hostname",
                             "/proc/self/oom_score_adj", "/proc/sys/vm/drop_caches"}) {
        tellCall(std::string("place ") + path, open(path, O_WRONLY | O_CLOEXEC));
    }
    for (const char* path : {"/home", "/root", "/run", "/var", "/sys", "/mnt", "/boot", "/etc/shadow", "/etc/ssh"}) {
        tell(std::string("place ") + path, access(path, F_OK) == 0, "is seen");
    }
}

/// The rights of this process, and those of a program that it starts. Root's may be the three that a root of another
/// user's takes.
void attackRights() {
    constexpr unsigned long CHOWN_DAC_OVERRIDE_FOWNER = 0xB;
    inACopy([] {
        execl("/bin/cp", "cp", "/proc/self/status", "/installer-home/status", nullptr);
        return false;
    });
    for (const char* file : {"/proc/self/status", "/installer-home/status"}) {
        std::ifstream status(file);
        for (std::string line; std::getline(status, line);) {
            const bool isHeld = line.compare(0, 3, "Cap") == 0 && line.compare(0, 6, "CapBnd") != 0;
            const unsigned long held = isHeld ? std::stoul(line.substr(line.find('\t') + 1), nullptr, 16) : 0;
            if (isHeld) {
                tell("rights: " + line.substr(0, 6) + " in " + file, (held & ~CHOWN_DAC_OVERRIDE_FOWNER) != 0, line);
            }
        }
    }
    tell("rights: more by a program", prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 1);
}

/// How many mebibytes can be written to a new file.
std::size_t fill(const std::string& path) {
    const std::string mebibyte(1U << 20U, 'x');
    const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    std::size_t count = 0;
    while (count < 1024 && write(file, mebibyte.data(), mebibyte.size()) == static_cast<ssize_t>(mebibyte.size())) {
        ++count;
    }
    close(file);
    unlink(path.c_str());
    return count;
}

void attackTerminal() {
    std::ifstream status("/proc/self/stat");
    std::string fields, state;
    int parent = 0, group = 0, session = 0, controlling = -1;
    std::getline(status, fields, ')');
    status >> state >> parent >> group >> session >> controlling;
    tell("terminal: of its session", controlling != 0, std::to_string(controlling));
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    tellCall("terminal: opened", terminal);
    const char typed = 'x';
    tell("terminal: typed into", terminal >= 0 && ioctl(terminal, TIOCSTI, &typed) == 0);
}

/// Property lists of a few megabytes each, which a report tells in hundreds.
void writeManyValues() {
    std::string list = "<plist><dict><key>a</key><array>";
    for (int i = 0; i < 500000; ++i) {
        list += "<true/>";
    }
    list += "</array></dict></plist>";
    fs::create_directories("/Library/Preferences");
    for (const char* name : {"1", "2", "3", "4", "5", "6", "7", "8"}) {
        std::ofstream("/Library/Preferences/" + (name + std::string(".plist"))) << list;
    }
}

void attackResources() {
    for (const char* place : {"/installer-home/fill", "/dev/shm/fill"}) {
        const std::size_t filled = fill(place);
        tell(std::string("fill ") + place, filled > 300, std::to_string(filled) + " MiB");
    }
    tell("fill: one endless file", inACopy([] {
             std::signal(SIGXFSZ, SIG_IGN);
             const int file = open("/Library/endless", O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
             const bool isEndless = ftruncate(file, off_t{1} << 40) == 0;
             unlink("/Library/endless");
             return isEndless;
         }));
    tell("fill: memory", inACopy([] {
             constexpr std::size_t PIECE = std::size_t{64} << 20U;
             for (int i = 0; i < 128; ++i) {
                 if (mmap(nullptr, PIECE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED) {
                     return false;
                 }
             }
             return true;
         }));
}

void attackForks() {
    int count = 0;
    for (; count < 2000; ++count) {
        const pid_t child = fork();
        if (child < 0) {
            break;
        }
        if (child == 0) {
            pause();
            _exit(0);
        }
    }
    tell("forks", count > 300, std::to_string(count) + " processes");
}

/// A process that nobody waits for, and that shows that it lives.
void leaveBehind() {
    if (fork() == 0) {
        setsid();
        if (fork() == 0) {
            prctl(PR_SET_PDEATHSIG, 0);
            for (int i = 0; i < 20000; ++i) {
                std::ofstream(order()[1]) << i;
                usleep(5000);
            }
        }
        _exit(0);
    }
    usleep(50000);
}

/// The descriptors on which the worker speaks with the host.
std::vector<int> channels(mode_t type) {
    std::vector<int> found;
    for (int fd = STDERR_FILENO + 1; fd < 64; ++fd) {
        struct stat status {};
        if (fstat(fd, &status) == 0 && (status.st_mode & S_IFMT) == type) {
            found.push_back(fd);
        }
    }
    return found;
}

/// Writes the bytes to the host, again and again if that is wanted.
void forge(mode_t type, const std::string& bytes, bool isEndless) {
    for (const int fd : channels(type)) {
        do {
            if (write(fd, bytes.data(), bytes.size()) < 0) {
                break;
            }
        } while (isEndless);
    }
}

std::string unescaped(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x') {
            bytes += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

void printEscapes() {
    std::fputs((ESCAPES + "\n").c_str(), stdout);
    std::fflush(stdout);
    fs::create_directories("/Library/Preferences/" + ESCAPES);
    std::ofstream("/Library/Preferences/" + ESCAPES + ".plist") << "{";
    std::ofstream("/Library/Preferences/" + ESCAPES + "/" + ESCAPES) << ESCAPES;
    fs::create_symlink(ESCAPES, "/Library/Preferences/link" + ESCAPES);
    throw std::runtime_error("escapes " + ESCAPES);
}

/// What the static constructor does, also in `check`: it tries to leave a file where the order says.
void leaveFile() {
    std::ofstream(order()[1]) << "was here";
}

using Attack = std::function<void(const std::vector<std::string>&)>;

const std::map<std::string, Attack>& attacks() {
    static const std::map<std::string, Attack> ALL{
        {"inside",
         [](const std::vector<std::string>& order) {
             attackDescriptors();
             attackMounts();
             attackNamespaces();
             attackSpecialFiles();
             attackOtherProcessorsCalls();
             attackProcesses();
             attackSystemCalls();
             attackNetwork(order);
             attackEnvironment();
             attackRights();
             attackPlaces();
             attackResources();
         }},
        {"forks", [](const auto&) { attackForks(); }},
        {"terminal", [](const auto&) { attackTerminal(); }},
        {"many values", [](const auto&) { writeManyValues(); }},
        {"leave behind", [](const auto&) { leaveBehind(); }},
        {"leave behind and lie",
         [](const auto&) {
             leaveBehind();
             forge(S_IFIFO,
                   R"({"event":"stepEnds","step":"pre","flags":0,"type":"","message":""})"
                   "\n"
                   R"({"event":"finished"})"
                   "\n",
                   false);
             _exit(0);
         }},
        {"leave behind and hang",
         [](const auto&) {
             leaveBehind();
             pause();
         }},
        {"kill", [](const auto&) { kill(-1, SIGKILL); }},
        {"event", [](const auto& order) { forge(S_IFIFO, unescaped(order[1]) + "\n", false); }},
        {"endless event", [](const auto& order) { forge(S_IFIFO, order[1], true); }},
        {"alert",
         [](const auto& order) {
             forge(S_IFSOCK, unescaped(order[1]), false);
             pause();
         }},
        {"endless alert", [](const auto& order) { forge(S_IFSOCK, unescaped(order[1]), true); }},
        {"endless output",
         [](const auto&) {
             for (;;) {
                 std::puts("there is more");
             }
         }},
        {"escapes", [](const auto&) { printEscapes(); }},
        {"nothing", [](const auto&) {}},
    };
    return ALL;
}

void runStep(XCodParamBlock*) {
    const std::vector<std::string> given = order();
    if (const auto attack = attacks().find(given[0]); attack != attacks().end()) {
        attack->second(given);
    }
}

struct AtLoading {
    AtLoading() {
        if (order()[0] == "at loading") {
            leaveFile();
            leaveBehind();
        }
    }
};

const AtLoading g_atLoading;

HRESULT queryInterface(void* self, REFIID, void** out) {
    *out = self;
    return S_OK;
}

ULONG count(void*) {
    return 1;
}

const XCodFunctionBlock g_table{nullptr, queryInterface, count, count, runStep};
const XCodFunctionBlock* g_instance = &g_table;

}  // namespace

extern "C" __attribute__((visibility("default"))) void* MyFactory(CFAllocatorRef, CFUUIDRef) {
    return &g_instance;
}

XCOD_EXPORT std::int32_t g_cvPluginID;
std::int32_t g_cvPluginID = 0;

void PreInstall(XCodParamBlock* block) {
    runStep(block);
}

void PostInstall(XCodParamBlock* block) {
    runStep(block);
}
