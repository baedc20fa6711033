// What becomes of preference files when things go wrong: damaged files, full disks, other writers, sudden ends.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "platform/StoreFailures.h"
#include "tests/platform/PreferencesSupport.h"
#include "tests/support/PrivateRoot.h"
#include "tests/support/StandardError.h"

namespace test {

namespace {

using testing::HasSubstr;

using PreferenceFaults = UserPreferences;

TEST_F(PreferenceFaults, AFileThatIsNoDictionaryIsMovedAsideAndNeverLost) {
    const std::string cases[] = {
        "",
        "garbage",
        "bplist00 cut short",
        "<plist><array/></plist>",
        "<?xml version=\"1.0\"?><plist><dict><key>a</key><string>\xFF</string></dict></plist>",
        "<plist><dict><key>a</key><string>cut",
    };
    int number = 0;
    for (const std::string& bytes : cases) {
        writeFile(file(), bytes);
        setText("Lang", "fr");
        const std::string aside = std::string(DOMAIN_NAME) + ".plist.corrupt-" + std::to_string(++number);
        EXPECT_THAT(errorsOf([&] { EXPECT_TRUE(synchronize()) << bytes; }), HasSubstr("kept as " + aside + "\n"));
        EXPECT_EQ(readFile(folder() + "/" + aside), bytes);
        EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
    }
    EXPECT_EQ(namesIn(folder()).size(), std::size(cases) + 1);
}

TEST_F(PreferenceFaults, AFileThatCannotBeRewrittenWithoutLossIsLeftAlone) {
    writeWithPython("{'Text': 'a\\0b'}", "BINARY");
    const std::string before = readFile(file());
    setText("Lang", "fr");
    EXPECT_THAT(errorsOf([] { EXPECT_FALSE(synchronize()); }), HasSubstr("it holds text with a NUL"));
    EXPECT_EQ(readFile(file()), before);
    fs::remove(file());
    EXPECT_TRUE(synchronize()) << "the change was still collected";
    EXPECT_EQ(copyText("Lang"), "fr");
}

TEST_F(PreferenceFaults, ALinkIsKeptAsideAndItsTargetLeftAlone) {
    fs::create_directories(folder());
    writeFile(home_ / "target", "text");
    fs::create_symlink(home_ / "target", file());
    setText("Lang", "fr");
    EXPECT_EQ(copyText("Lang"), "fr");
    EXPECT_THAT(errorsOf([] { EXPECT_TRUE(synchronize()); }), HasSubstr("it is a symbolic link; kept as"));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file())));
    EXPECT_EQ(fs::read_symlink(file() + ".corrupt-1"), home_ / "target");
    EXPECT_EQ(readFile(home_ / "target"), "text");
}

TEST_F(PreferenceFaults, AFolderOrPipeInTheFilesPlaceIsAnError) {
    for (const bool isPipe : {false, true}) {
        fs::create_directories(isPipe ? folder() : file() + "/inside");
        if (isPipe) {
            ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
        }
        setText("Lang", "fr");
        const std::string errors = errorsOf([] { EXPECT_FALSE(synchronize()); });
        EXPECT_THAT(errors, HasSubstr(file() + ": it is no regular file\n"));
        ASSERT_EQ(cv::storeFailures().size(), 1U);
        EXPECT_EQ(cv::storeFailures()[0].what, file());
        EXPECT_EQ(cv::storeFailures()[0].reason, "it is no regular file");
        fs::remove_all(file());
        EXPECT_TRUE(synchronize());
        EXPECT_TRUE(cv::storeFailures().empty());
        EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
        fs::remove_all(folder());
    }
}

TEST_F(PreferenceFaults, WhatCouldNotBeStoredIsStoredByTheNextCall) {
    fs::create_directories(folder());
    const unsigned user = geteuid() == 0 ? 65534 : geteuid();  // root may write to a read-only folder
    for (const std::string& path : {home_.path(), home_ / "Library", folder()}) {
        ASSERT_EQ(chown(path.c_str(), user, getegid()), 0);
    }
    const ProcessResult result =
        run({PREFERENCES_DRIVER, "user", DOMAIN_NAME, "set", "First", "1", "run", "chmod 0555 " + folder(), "sync",
             "get", "First", "run", "chmod 0755 " + folder(), "set", "Second", "2", "sync"},
            {"", "/", {}, {}, geteuid() == 0 ? user : 0});
    EXPECT_EQ(result.out, "0\n1\n1\n") << result.err;
    EXPECT_EQ(result.err, "CFPreferencesSynchronize: " + file() + ": Permission denied\n");
    EXPECT_EQ(python("p", file()), "{'First': '1', 'Second': '2'}");
}

TEST_F(PreferenceFaults, ThreadsLoseNothing) {
    constexpr int COUNT = 20;
    const auto work = [](const std::string& prefix) {
        for (int i = 0; i < COUNT; ++i) {
            setText(prefix + std::to_string(i), "x");
            EXPECT_TRUE(synchronize());
        }
    };
    std::thread other(work, "a");
    work("b");
    other.join();
    EXPECT_EQ(python("len(p)", file()), std::to_string(2 * COUNT));
}

TEST_F(PreferenceFaults, ProcessesThatWriteAtTheSameTimeLoseNothing) {
    constexpr int COUNT = 20;
    const auto work = [](const std::string& prefix) {
        std::vector<std::string> command{PREFERENCES_DRIVER, "user", DOMAIN_NAME};
        for (int i = 0; i < COUNT; ++i) {
            command.insert(command.end(), {"set", prefix + std::to_string(i), "x", "sync"});
        }
        const ProcessResult result = run(command);
        EXPECT_EQ(result.out.size(), 2U * COUNT) << result.err;
        EXPECT_EQ(result.err, "");
    };
    std::thread first(work, "a"), second(work, "b");
    work("c");
    first.join();
    second.join();
    EXPECT_EQ(python("len(p)", file()), std::to_string(3 * COUNT));
    EXPECT_EQ(namesIn(folder()).size(), 1U);
}

TEST_F(PreferenceFaults, AWriterKilledAmongManyWritesLeavesAWholeFile) {
    constexpr int KILLS = 20;
    setText("Other", "kept");
    ASSERT_TRUE(synchronize());
    std::mt19937 random(1);
    for (int kill = 0; kill < KILLS; ++kill) {
        const ino_t inode = statusOf(file()).st_ino;
        const pid_t writer = fork();
        if (writer == 0) {
            execl(PREFERENCES_DRIVER, PREFERENCES_DRIVER, "user", DOMAIN_NAME, "count", "1000000", nullptr);
            _exit(127);
        }
        while (statusOf(file()).st_ino == inode) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 10000));
        ::kill(writer, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(python("p['Other'], p['Text'] == chr(ord('a') + p['Counter'] % 26) * 50000", file()), "kept True");
    }

    setText("Last", "x");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(namesIn(folder()), (std::vector<std::string>{"com.corvane.test.plist"})) << "leftovers are removed";
}

/// A program under this process's control from its first SIGSTOP on.
class TracedProgram {
public:
    explicit TracedProgram(const std::vector<const char*>& command) : id_(fork()) {
        if (id_ == 0) {
            setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // the leak checker traces, too; there is room for one only
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 && raise(SIGSTOP) == 0) {
                execv(command[0], const_cast<char* const*>(command.data()));
            }
            _exit(127);
        }
        waitpid(id_, &status_, 0);
        ptrace(PTRACE_SETOPTIONS, id_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        do {
            ptrace(PTRACE_CONT, id_, nullptr, 0);
            waitpid(id_, &status_, 0);
        } while (WIFSTOPPED(status_) && WSTOPSIG(status_) != SIGSTOP);
    }
    ~TracedProgram() {
        if (!hasEnded()) {
            kill(id_, SIGKILL);
            waitpid(id_, &status_, 0);
        }
    }
    TracedProgram(const TracedProgram&) = delete;
    TracedProgram& operator=(const TracedProgram&) = delete;

    bool hasEnded() const { return !WIFSTOPPED(status_); }
    bool endedWell() const { return WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }

    /// Lets the program run to its next system call and returns that call's number, or -1 when the program has
    /// ended.
    long runToNextCall() {
        while (!hasEnded()) {
            ptrace(PTRACE_SYSCALL, id_, nullptr, 0);
            waitpid(id_, &status_, 0);
            __ptrace_syscall_info info{};
            if (WIFSTOPPED(status_) && WSTOPSIG(status_) == (SIGTRAP | 0x80) &&
                ptrace(PTRACE_GET_SYSCALL_INFO, id_, sizeof info, &info) > 0 && info.op == PTRACE_SYSCALL_INFO_ENTRY) {
                return static_cast<long>(info.entry.nr);
            }
        }
        return -1;
    }

private:
    pid_t id_;
    int status_ = 0;
};

/// Stores one change in another process and ends it before its system call number `call`, counted from when it took
/// the lock. False when the process made fewer calls, and so came to its end.
bool storeAndKill(int call) {
    TracedProgram writer({PREFERENCES_DRIVER, "user", DOMAIN_NAME, "set", "New", "2", "stop", "sync", nullptr});
    while (!writer.hasEnded() && writer.runToNextCall() != SYS_flock) {
    }
    for (; call > 0 && !writer.hasEnded(); --call) {
        writer.runToNextCall();
    }
    EXPECT_TRUE(!writer.hasEnded() || writer.endedWell());
    return !writer.hasEnded();
}

TEST_F(PreferenceFaults, AWriterKilledBeforeAnyOfItsSystemCallsLeavesTheOldFileOrTheNewOne) {
    setText("Old", "1");
    ASSERT_TRUE(synchronize());
    const std::string old = readFile(file());
    int calls = 0;
    int changes = 0;
    for (bool goesOn = true; goesOn; ++calls) {
        writeFile(file(), old);
        goesOn = storeAndKill(calls);
        const std::string now = readFile(file());
        if (now != old) {
            ++changes;
            EXPECT_EQ(python("p == {'Old': '1', 'New': '2'}", file()), "True") << calls;
        }
        setText("Old", "1");
        ASSERT_TRUE(synchronize());
        EXPECT_EQ(namesIn(folder()).size(), 1U) << "leftovers are removed";
    }
    EXPECT_GT(changes, 1);
    EXPECT_GT(calls - changes, 10) << "the writer was killed before it came to the end of storing";
}

TEST_F(PreferenceFaults, AWriterKilledBeforeAnyOfItsSystemCallsLosesNoDamagedFile) {
    const std::string damaged = "garbage";
    int calls = 0;
    for (bool goesOn = true; goesOn; ++calls) {
        fs::remove_all(folder());
        writeFile(file(), damaged);
        goesOn = storeAndKill(calls);
        const std::string aside = file() + ".corrupt-1";
        const bool isAside = fs::exists(aside);
        EXPECT_EQ(readFile(isAside ? aside : file()), damaged) << calls;
        if (isAside && fs::exists(file())) {
            EXPECT_EQ(python("p", file()), "{'New': '2'}") << calls;
        }
    }
    EXPECT_GT(calls, 10);
}

TEST_F(PreferenceFaults, OnlyLeftoversOfItsOwnAreRemoved) {
    const std::vector<std::string> others{".preferences-0123456789abcdef.old", ".preferences-0123456789abcdeF.new",
                                          ".preferences-0123456789abcdef0.new", "com.corvane.test.plist.new"};
    for (const std::string& name : others) {
        writeFile(folder() + "/" + name, "x");
    }
    writeFile(folder() + "/.preferences-0123456789abcdef.new", "x");
    setText("Lang", "fr");
    ASSERT_TRUE(synchronize());
    std::vector<std::string> expected = others;
    expected.push_back("com.corvane.test.plist");
    EXPECT_THAT(namesIn(folder()), testing::UnorderedElementsAreArray(expected));
}

TEST_F(PreferenceFaults, AFullDiskKeepsTheOldFile) {
    PrivateRoot root;
    const std::string script = R"sh(
        set -e
        store="$0 any com.corvane.test"
        file=/Library/Preferences/com.corvane.test.plist
        $store set Old 1 sync
        cp $file /Applications/before
        dd if=/dev/zero of=/Library/fill bs=4096 2>/dev/null || true
        $store set New "$(head -c 20000 /dev/zero | tr '\0' x)" sync run "
            cp $file /Applications/full; ls -A /Library/Preferences >/Applications/names; rm /Library/fill" sync
        cp $file /Applications/after)sh";
    const ProcessResult result =
        run(root.wrap({"sh", "-c", script, PREFERENCES_DRIVER}, {"--size", "262144", "--tmpfs", "/Library"}));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "1\n0\n1\n");
    EXPECT_EQ(result.err,
              "CFPreferencesSynchronize: /Library/Preferences/com.corvane.test.plist: No space left on "
              "device\n");
    EXPECT_EQ(readFile(root / "Applications/full"), readFile(root / "Applications/before"));
    EXPECT_EQ(readFile(root / "Applications/names"), "com.corvane.test.plist\n");
    EXPECT_EQ(python("p['Old'], len(p['New'])", root / "Applications/after"), "1 20000");
}

}  // namespace

}  // namespace test
