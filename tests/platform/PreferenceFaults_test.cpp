// What becomes of preference files when things go wrong: damaged files, full disks, other writers, sudden ends.

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "platform/Descriptor.h"
#include "platform/StoreFailures.h"
#include "tests/platform/PreferencesSupport.h"
#include "tests/support/PrivateRoot.h"

namespace test {

namespace {

using PreferenceFaults = UserPreferences;

TEST_F(PreferenceFaults, AFileWithoutADictionaryIsMovedAsideAndNeverLost) {
    int number = 0;
    for (const std::string bytes : {"", "bplist00 cut short", "<plist><array/></plist>", "<plist><dict><key>a</key>"}) {
        writeFile(file(), bytes);
        setText("Lang", "fr");
        const std::string aside = file() + ".corrupt-" + std::to_string(++number);
        EXPECT_THAT(errorsOf([&] { EXPECT_TRUE(synchronize()) << bytes; }),
                    HasSubstr("kept as " + fs::path(aside).filename().string() + "\n"));
        EXPECT_EQ(readFile(aside), bytes);
        EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
    }
    EXPECT_EQ(namesIn(folder()).size(), 5U);
}

TEST_F(PreferenceFaults, ALinkIsMovedAsideAndItsTargetLeftAlone) {
    writeFile(folder() + "/target", "<plist><dict><key>Lang</key><string>de</string></dict></plist>");
    fs::create_symlink("target", file());
    EXPECT_EQ(copyText("Lang"), "(none)");
    setText("Lang", "fr");
    EXPECT_THAT(errorsOf([] { EXPECT_TRUE(synchronize()); }), HasSubstr("it is a symbolic link; kept as"));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file())));
    EXPECT_EQ(fs::read_symlink(file() + ".corrupt-1"), "target");
    EXPECT_EQ(python("p", folder() + "/target"), "{'Lang': 'de'}");
}

TEST_F(PreferenceFaults, WhatCannotBeReplacedIsLeftAloneAndTheChangeIsStoredLater) {
    const std::string sameKey = "<plist><dict><key>a</key><true/><key>a</key><false/></dict></plist>";
    for (const std::string reason :
         {"it is not a regular file", "it cannot be rewritten without loss: a dictionary in it"}) {
        fs::create_directories(folder());
        const bool isPipe = reason == "it is not a regular file";
        if (isPipe) {
            ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
        } else {
            writeFile(file(), sameKey);
        }
        setText("Lang", "fr");
        EXPECT_THAT(errorsOf([] { EXPECT_FALSE(synchronize()); }), HasSubstr(file() + ": " + reason));
        ASSERT_EQ(cv::storeFailures().size(), 1U);
        EXPECT_EQ(cv::storeFailures()[0].what, file());
        EXPECT_THAT(cv::storeFailures()[0].reason, StartsWith(reason));
        EXPECT_TRUE(isPipe || readFile(file()) == sameKey);
        fs::remove(file());
        EXPECT_TRUE(synchronize());
        EXPECT_TRUE(cv::storeFailures().empty());
        EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
        fs::remove(file());
    }
}

/// Whether this process waits for a lock that it shares with nobody.
bool waitsForALock() {
    const std::string waiter = "-> FLOCK  ADVISORY  WRITE " + std::to_string(getpid()) + " ";
    return readFile("/proc/locks").find(waiter) != std::string::npos;
}

TEST_F(PreferenceFaults, AWriterWaitsUntilItIsTheOnlyOne) {
    fs::create_directories(folder());
    cv::Descriptor other(open(folder().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(other.get(), LOCK_SH), 0);
    std::atomic<bool> isStored = false;
    std::thread writer([&] {
        setText("Lang", "fr");
        isStored = synchronize();
    });
    while (!isStored && !waitsForALock()) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(isStored);
    other = cv::Descriptor();
    writer.join();
    EXPECT_TRUE(isStored);
}

TEST_F(PreferenceFaults, ThreadsAndProcessesThatWriteAtTheSameTimeLoseNothing) {
    constexpr int WRITERS = 4, COUNT = 20;
    onThreads(WRITERS, [](int number) {
        const std::string prefix = std::to_string(number) + ".";
        std::vector<std::string> command{PREFERENCES_DRIVER, "user", DOMAIN_NAME};
        for (int i = 0; i < COUNT; ++i) {
            const std::string key = prefix + std::to_string(i);
            command.insert(command.end(), {"set", key, "x", "sync"});
            if (number >= WRITERS / 2) {
                setText(key, "x");
                EXPECT_TRUE(synchronize());
            }
        }
        if (number < WRITERS / 2) {
            EXPECT_EQ(run(command).out.size(), 2U * COUNT);
        }
    });
    EXPECT_EQ(python("len(p)", file()), std::to_string(WRITERS * COUNT));
    EXPECT_EQ(namesIn(folder()).size(), 1U);
}

/// Stores one change in another process and kills it before its system call number `call`, counted from when it took
/// the lock. False when the process made fewer calls, and so came to its end. Until then the file that it writes, and
/// the folder in which it renames it, are flushed before it goes on.
bool storeAndKill(int call) {
    const pid_t writer = fork();
    if (writer == 0) {
        setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // the leak checker traces, too; there is room for one only
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        execl(PREFERENCES_DRIVER, PREFERENCES_DRIVER, "user", DOMAIN_NAME, "set", "New", "2", "sync", nullptr);
        _exit(127);
    }
    int status = 0;
    bool isLocked = false;
    constexpr std::uint64_t NONE = ~0ULL;
    std::uint64_t unflushed = NONE;  // the descriptor
    while (waitpid(writer, &status, 0) == writer && WIFSTOPPED(status)) {
        __ptrace_syscall_info info{};
        ptrace(PTRACE_SETOPTIONS, writer, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        ptrace(PTRACE_GET_SYSCALL_INFO, writer, sizeof info, &info);
        const bool isCall = info.op == PTRACE_SYSCALL_INFO_ENTRY;
        isLocked = isLocked || (isCall && info.entry.nr == SYS_flock);
        if (isLocked && isCall && call-- == 0) {
            kill(writer, SIGKILL);
            waitpid(writer, &status, 0);
            return true;
        }
        if (isCall && info.entry.nr == SYS_openat && (info.entry.args[2] & O_CREAT) != 0) {
            EXPECT_NE(info.entry.args[2] & O_EXCL, 0U) << "what somebody else put there would be written into";
        }
        const std::uint64_t descriptor = info.entry.args[0];
        if (isCall && info.entry.nr == SYS_renameat) {
            EXPECT_EQ(unflushed, NONE) << "a file without its bytes would take the old one's place";
            unflushed = descriptor;
        } else if (isCall && info.entry.nr == SYS_write && descriptor > 2) {
            unflushed = descriptor;
        } else if (isCall && info.entry.nr == SYS_fsync && unflushed == descriptor) {
            unflushed = NONE;
        }
        ptrace(PTRACE_SYSCALL, writer, nullptr, nullptr);
    }
    EXPECT_EQ(unflushed, NONE) << "the folder";
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    return false;
}

TEST_F(PreferenceFaults, AWriterKilledBeforeAnyOfItsSystemCallsLosesNothing) {
    setText("Old", "1");
    ASSERT_TRUE(synchronize());
    const std::string aside = file() + ".corrupt-1";
    for (const auto& [before, after] :
         {std::pair<std::string, const char*>{readFile(file()), "{'New': '2', 'Old': '1'}"},
          {"garbage", "{'New': '2'}"}}) {
        const bool isDamaged = before == "garbage";
        int calls = 0, changes = 0;
        for (bool goesOn = true; goesOn; ++calls) {
            fs::remove_all(folder());
            writeFile(file(), before);
            goesOn = storeAndKill(calls);
            const bool isAside = fs::exists(aside);
            EXPECT_TRUE(!isAside || (isDamaged && readFile(aside) == before)) << calls;
            ASSERT_TRUE(fs::exists(file())) << calls;
            if (readFile(file()) != before) {
                ++changes;
                EXPECT_EQ(python("p", file()), after) << calls;
                EXPECT_EQ(isAside, isDamaged) << calls;
            }
            setText("Old", "1");
            ASSERT_TRUE(synchronize());
            EXPECT_EQ(namesIn(folder()).size(), isDamaged ? 2U : 1U) << "leftovers are removed";
        }
        EXPECT_GT(changes, 1);
        EXPECT_GT(calls - changes, 10) << "the writer was killed before it came to the end of storing";
    }
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
        truncate -s -8192 /Library/fill  # room for a part
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
