// Whole programs from their start to their end: one that uses CvBase a little, and the installer host.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "benchmarks/support/Main.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using Command = std::vector<std::string>;

const char* const TRUE_PROGRAM = "/bin/true";

/// The file actions of a program that prints nothing.
class Silence {
public:
    Silence() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0);
    }
    ~Silence() { posix_spawn_file_actions_destroy(&actions_); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

/// Runs `command` to its end; whether it ended with the exit status 0. The C library starts it without a copy of this
/// process, so that the size of this one does not matter.
bool succeeds(const Command& command) {
    static const Silence silence;
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t process = 0;
    if (const int error = posix_spawnp(&process, arguments[0], silence.get(), nullptr, arguments.data(), environ)) {
        throw std::system_error(error, std::generic_category(), command[0]);
    }
    int status = 0;
    return waitpid(process, &status, 0) == process && status == 0;
}

/// A machine as it stands before its first installation.
class Machine {
public:
    Machine() { reset(); }

    const std::string& path() const { return folder_.path(); }

    void reset() const {
        fs::remove_all(folder_ / "Library");
        fs::remove_all(folder_ / "Applications");
        test::writeFile(folder_ / "Library/Application Support/Corvane/Updater/install_status.txt", "UpdatesEnabled\n");
        test::writeFile(folder_ / "Applications/Corvane/Icon\r", "");
    }

    bool isInstalled() const {
        return fs::exists(folder_ / "Library/Preferences/com.corvane.updater.plist") &&
               fs::exists(folder_ / "Library/Preferences/com.corvane.audioplugins.Ambrel.plist");
    }

private:
    test::TempDir folder_;
};

/// Adds one whole run of a program, which `prepare` gives the command of, as a subject; `correct` looks at what it did.
void addProgram(
    const std::string& work, const std::string& name, std::function<Command()> prepare,
    std::function<bool()> correct = [] { return true; }) {
    struct Run {
        Command command;
        bool succeeded = false;
    };
    const auto run = std::make_shared<Run>();
    bench::add(work, {name, [run] { run->succeeded = succeeds(run->command); },
                      [run, correct = std::move(correct)] { return run->succeeded && correct(); },
                      [run, prepare = std::move(prepare)] { run->command = prepare(); }, bench::Clock::Wall, true});
}

void addProgram(const std::string& work, const std::string& name, const Command& command) {
    addProgram(work, name, [command] { return command; });
}

/// An installation, and the namespaces alone in which the host confines the bundle's code.
void addInstallation() {
    const std::string work = "Startup/installation";
    const auto machine = std::make_shared<Machine>();
    addProgram(
        work, "CvBase",
        [machine]() -> Command {
            machine->reset();
            return {CV_HOST_PROGRAM, "run", "--product=5100", "--root=" + machine->path(), CV_PLUGIN_BUNDLE};
        },
        [machine] { return machine->isInstalled(); });
    addProgram(work, "bwrap",
               {"bwrap", "--unshare-all", "--unshare-user", "--disable-userns", "--new-session", "--cap-drop", "ALL",
                "--clearenv", "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc", TRUE_PROGRAM});
}

/// How many lines `ldd` prints of a program: the libraries that are loaded with it.
std::uint64_t countLibraries(const std::string& program) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(("ldd '" + program + "'").c_str(), "r"), pclose);
    std::string text;
    for (int c; (c = std::fgetc(pipe.get())) != EOF;) {
        text += static_cast<char>(c);
    }
    if (text.empty() || text.find("not found") != std::string::npos) {
        throw std::runtime_error("ldd cannot tell the libraries of " + program);
    }
    return static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

[[maybe_unused]] const bool added = [] {
    addProgram("Startup/one-string", "CvBase", {CV_ONE_STRING});
    addProgram("Startup/one-string", "ICU", {CV_ONLY_ICU});
    bench::addCount("Startup/libraries-of-one-string", [] { return countLibraries(CV_ONE_STRING); });
    addProgram("Startup/installer-host-version", "CvBase", {CV_HOST_PROGRAM, "--version"});
    addProgram("Startup/installer-host-version", "true", {TRUE_PROGRAM});
    addInstallation();
    return true;
}();

}  // namespace
