#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/MessageSend.h"
#include "platform/StoreFailures.h"
#include "tests/support/CFSupport.h"
#include "tests/support/PrivateRoot.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::Owned;
using testing::HasSubstr;

constexpr const char* NAME = "com.corvane.test";

Owned<CFStringRef> string(const std::string& text) {
    return Owned(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
}

/// What `expression` is in Python, with `p` the dictionary that the property list file holds.
std::string python(const std::string& expression, const std::string& file) {
    const std::string script =
        "import plistlib,sys,datetime\np=plistlib.load(open(sys.argv[1],'rb'))\nprint(" + expression + ")";
    const test::ProcessResult result = test::run({"python3", "-c", script, file});
    return result.exitStatus == 0 ? result.out.substr(0, result.out.size() - 1) : result.err;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t modeOf(const std::string& path) {
    return statusOf(path).st_mode & 07777U;
}

template <typename Body>
std::string errorsOf(Body body) {
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

/// The current user's preferences on any host, in a home folder of the test's own.
class UserPreferences : public testing::Test {
protected:
    UserPreferences() { setenv("HOME", home_.path().c_str(), 1); }

    std::string folder() const { return home_ / "Library/Preferences"; }
    std::string file() const { return folder() + "/" + NAME + ".plist"; }

    static void set(const std::string& key, CFPropertyListRef value) {
        CFPreferencesSetValue(string(key).get(), value, CFSTR("com.corvane.test"), kCFPreferencesCurrentUser,
                              kCFPreferencesAnyHost);
    }
    static void setText(const std::string& key, const std::string& value) { set(key, string(value).get()); }
    static bool synchronize() {
        return CFPreferencesSynchronize(CFSTR("com.corvane.test"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    }
    static Owned<CFPropertyListRef> copy(const std::string& key) {
        return Owned(CFPreferencesCopyValue(string(key).get(), CFSTR("com.corvane.test"), kCFPreferencesCurrentUser,
                                            kCFPreferencesAnyHost));
    }
    static std::string copyText(const std::string& key) {
        const auto value = copy(key);
        return value ? test::text(static_cast<CFStringRef>(value.get())) : "(none)";
    }

    /// Writes the preference file with Python: `entries` is an expression for a dictionary, `format` BINARY or XML.
    void writeWithPython(const std::string& entries, const std::string& format) const {
        fs::create_directories(folder());
        const std::string script = "import plistlib,sys,datetime\nplistlib.dump(" + entries +
                                   ",open(sys.argv[1],'wb'),fmt=plistlib.FMT_" + format + ")";
        const test::ProcessResult result = test::run({"python3", "-c", script, file()});
        ASSERT_EQ(result.exitStatus, 0) << result.err;
    }

    test::TempDir home_;
};

TEST_F(UserPreferences, NothingIsWrittenBeforeSynchronize) {
    setText("Lang", "fr");
    EXPECT_FALSE(fs::exists(home_ / "Library"));
    EXPECT_EQ(copyText("Lang"), "fr") << "a reader sees the collected change";
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
    EXPECT_EQ(test::readFile(file()).substr(0, 8), "bplist00");
    EXPECT_EQ(namesIn(folder()), (std::vector<std::string>{"com.corvane.test.plist"}));
}

TEST_F(UserPreferences, FileAndFoldersCanBeReadByEveryoneWhateverTheUmask) {
    const mode_t before = umask(0077);
    setText("Lang", "fr");
    EXPECT_TRUE(synchronize());
    umask(before);
    EXPECT_EQ(modeOf(file()), 0644U);
    EXPECT_EQ(modeOf(folder()), 0755U);
    EXPECT_EQ(modeOf(home_ / "Library"), 0755U);
}

TEST_F(UserPreferences, WhatRootMakesForAUserIsTheUsers) {
    const uid_t user = geteuid() == 0 ? 65534 : geteuid();
    ASSERT_EQ(chown(home_.path().c_str(), user, getegid()), 0);
    setText("Lang", "fr");
    ASSERT_TRUE(synchronize());
    for (const std::string& path : {home_ / "Library", folder(), file()}) {
        EXPECT_EQ(statusOf(path).st_uid, user) << path;
    }
}

TEST_F(UserPreferences, KeysAreLiteral) {
    const std::vector<std::string> keys{
        "InstalledProducts/Corvane Mender 2/CurrentVersion", "a.b", "", "<&>\"'", "é😀", "\n"};
    for (const std::string& key : keys) {
        setText(key, "1.00");
    }
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("sorted(p) == sorted(['InstalledProducts/Corvane Mender 2/CurrentVersion','a.b','','<&>\"\\'',"
                     "'é\\U0001f600','\\n']) and set(p.values()) == {'1.00'}",
                     file()),
              "True");
}

TEST_F(UserPreferences, NumbersKeepTheirValueAndType) {
    const std::int64_t least = INT64_MIN;
    const double real = 0.1;
    const int two = 2;
    set("least", Owned(CFNumberCreate(nullptr, kCFNumberSInt64Type, &least)).get());
    set("real", Owned(CFNumberCreate(nullptr, kCFNumberFloat64Type, &real)).get());
    set("two", Owned(CFNumberCreate(nullptr, kCFNumberIntType, &two)).get());
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'least': -9223372036854775808, 'real': 0.1, 'two': 2}");
    const auto copied = copy("least");
    std::int64_t value = 0;
    EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(copied.get()), kCFNumberSInt64Type, &value));
    EXPECT_EQ(value, least);
}

TEST_F(UserPreferences, TextIsKeptExactly) {
    const std::u16string texts[] = {u"", u"\uFEFFmark", u"e\u0301\u00e9", u"\U0001F600", u"line\nline\r\t\x01"};
    for (const std::u16string& text : texts) {
        set("Text", test::makeString(text).get());
        ASSERT_TRUE(synchronize());
        const auto copied = copy("Text");
        EXPECT_EQ(test::units(static_cast<CFStringRef>(copied.get())), text);
    }
}

TEST_F(UserPreferences, OtherKeysKeepTheirValuesAndTypes) {
    const std::string entries =
        "{'n': -5, 'least': -2**63, 'big': 2**64-5, 'byte': 200, 'real': 1e-300, 'whole': 1.0, 'yes': True, 'one': 1,"
        "'text': 'é\\U0001f600', 'none': '', 'bytes': b'\\x00\\xff', 'nothing': b'', 'list': [1, [], {}, 'x', True],"
        "'old': datetime.datetime(1900, 1, 2, 3, 4, 5), 'far': datetime.datetime(2500, 1, 1), 'dict': {'a': {'b': 1}},"
        "'Lang': [1, 2] UID}";
    for (const std::string format : {"BINARY", "XML"}) {
        const std::string uid = format == "BINARY" ? ", 'uid': plistlib.UID(70000)" : "";
        std::string all = entries;
        all.replace(all.find(" UID"), 4, uid);
        writeWithPython(all, format);
        const std::string list = "repr(sorted((k, type(v), repr(v)) for k, v in p.items() if k != 'Lang'))";
        const std::string before = python(list, file());
        setText("Lang", "fr");
        ASSERT_TRUE(synchronize()) << format;
        EXPECT_EQ(python(list, file()), before) << format;
        EXPECT_EQ(python("p['Lang']", file()), "fr") << "a value of another type is replaced";
        EXPECT_THAT(before, HasSubstr("18446744073709551611"));
    }
}

TEST_F(UserPreferences, XmlNumbersDoNotDependOnTheLocale) {
    writeWithPython("{'real': 0.25}", "XML");
    const test::ProcessResult result = test::run({PREFERENCES_DRIVER, "user", NAME, "set", "Lang", "fr", "sync"},
                                                 {"", "", {{"LC_ALL", "de_DE.UTF-8"}}, {}, 0});
    EXPECT_EQ(result.out, "1\n");
    EXPECT_EQ(python("p['real']", file()), "0.25");
}

TEST_F(UserPreferences, AKeyThatTheFileHasTwiceIsThereOnceAfterwards) {
    const std::string entries = "\xD2\x01\x01\x02\x03"s + "\x51" + "a" + "\x10\x01" + "\x10\x02";
    const std::string trailer =
        std::string(6, '\0') + "\x01\x01" + std::string(7, '\0') + "\x04" + std::string(15, '\0');
    test::writeFile(file(), "bplist00" + entries + "\x08\x0D\x0F\x11" + trailer + "\x13");
    setText("a", "new");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'a': 'new'}");
    setText("a", "newer");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'a': 'newer'}");
}

TEST_F(UserPreferences, ANullValueRemovesTheKey) {
    setText("Keep", "a");
    setText("Remove", "b");
    ASSERT_TRUE(synchronize());
    set("Remove", nullptr);
    set("Never", nullptr);
    EXPECT_EQ(copyText("Remove"), "(none)");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'Keep': 'a'}");
}

TEST_F(UserPreferences, RemovingFromAMissingFileMakesNone) {
    set("Never", nullptr);
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UserPreferences, TheCollectedValueIsTheLastOne) {
    setText("Lang", "fr");
    setText("Lang", "de");
    ASSERT_TRUE(synchronize());
    set("Lang", nullptr);
    setText("Lang", "ja");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'Lang': 'ja'}");
    fs::remove(file());
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file())) << "what was stored is collected no longer";
}

TEST_F(UserPreferences, WhatCannotBeStoredIsRefusedWithOneLine) {
    const Owned<CFUUIDRef> uuid(CFUUIDCreateFromString(nullptr, CFSTR("5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8")));
    const auto nul = test::makeString(std::u16string_view(u"a\0b", 3));
    const auto half = test::makeString(u"a\xD800");
    const Owned endless(cv::send<CFTypeRef>(cv::classNamed("NSMutableArray"), "new"));
    const id array = static_cast<id>(const_cast<void*>(endless.get()));
    cv::send<void>(array, "addObject:", array);
    for (const CFPropertyListRef value :
         {CFPropertyListRef(uuid.get()), CFPropertyListRef(nul.get()), CFPropertyListRef(half.get()), endless.get()}) {
        const std::string errors = errorsOf([&] { set("Bad", value); });
        EXPECT_THAT(errors, HasSubstr("\"Bad\" is refused"));
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
    cv::send<void>(array, "removeAllObjects");
    for (const CFStringRef key : {nul.get(), half.get(), CFStringRef(nullptr)}) {
        EXPECT_NE(errorsOf([&] {
                      CFPreferencesSetValue(key, CFSTR("x"), CFSTR("com.corvane.test"), kCFPreferencesCurrentUser,
                                            kCFPreferencesAnyHost);
                  }),
                  "");
    }
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UserPreferences, DomainsAndScopesThatNameNoFileAreRefused) {
    const auto nul = test::makeString(std::u16string_view(u"a\0b", 3));
    const struct {
        CFStringRef domain, user, host;
    } cases[] = {
        {CFSTR(""), kCFPreferencesCurrentUser, kCFPreferencesAnyHost},
        {CFSTR("../x"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost},
        {CFSTR("/etc/x"), kCFPreferencesAnyUser, kCFPreferencesCurrentHost},
        {nul.get(), kCFPreferencesCurrentUser, kCFPreferencesAnyHost},
        {nullptr, kCFPreferencesCurrentUser, kCFPreferencesAnyHost},
        {CFSTR("x"), kCFPreferencesAnyUser, kCFPreferencesAnyHost},
        {CFSTR("x"), CFSTR("somebody"), kCFPreferencesAnyHost},
        {CFSTR("x"), kCFPreferencesCurrentUser, CFSTR("somewhere")},
        {CFSTR("x"), nullptr, nullptr},
    };
    for (const auto& c : cases) {
        const std::string errors = errorsOf([&] {
            CFPreferencesSetValue(CFSTR("k"), CFSTR("v"), c.domain, c.user, c.host);
            EXPECT_FALSE(CFPreferencesSynchronize(c.domain, c.user, c.host));
            EXPECT_EQ(CFPreferencesCopyValue(CFSTR("k"), c.domain, c.user, c.host), nullptr);
        });
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 3) << errors;
    }
    EXPECT_FALSE(fs::exists(home_ / "Library"));
}

TEST_F(UserPreferences, AFileThatIsNoDictionaryIsMovedAsideAndNeverLost) {
    const std::string cases[] = {"",
                                 "garbage",
                                 "bplist00 cut short",
                                 "<plist><array/></plist>",
                                 "<?xml version=\"1.0\"?><plist><dict><key>a</key><string>\xFF</string></dict></plist>",
                                 "<plist><dict><key>a</key><string>cut"};
    int number = 0;
    for (const std::string& bytes : cases) {
        test::writeFile(file(), bytes);
        setText("Lang", "fr");
        const std::string aside = std::string(NAME) + ".plist.corrupt-" + std::to_string(++number);
        EXPECT_THAT(errorsOf([&] { EXPECT_TRUE(synchronize()) << bytes; }), HasSubstr("kept as " + aside + "\n"));
        EXPECT_EQ(test::readFile(folder() + "/" + aside), bytes);
        EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
    }
    EXPECT_EQ(namesIn(folder()).size(), std::size(cases) + 1);
}

TEST_F(UserPreferences, AFileThatCannotBeRewrittenWithoutLossIsLeftAlone) {
    writeWithPython("{'Text': 'a\\0b'}", "BINARY");
    const std::string before = test::readFile(file());
    setText("Lang", "fr");
    EXPECT_THAT(errorsOf([] { EXPECT_FALSE(synchronize()); }), HasSubstr("it holds text with a NUL"));
    EXPECT_EQ(test::readFile(file()), before);
    fs::remove(file());
    EXPECT_TRUE(synchronize()) << "the change was still collected";
    EXPECT_EQ(copyText("Lang"), "fr");
}

TEST_F(UserPreferences, ALinkIsKeptAsideAndItsTargetLeftAlone) {
    fs::create_directories(folder());
    test::writeFile(home_ / "target", "text");
    fs::create_symlink(home_ / "target", file());
    setText("Lang", "fr");
    EXPECT_EQ(copyText("Lang"), "fr");
    EXPECT_THAT(errorsOf([] { EXPECT_TRUE(synchronize()); }), HasSubstr("it is a symbolic link; kept as"));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file())));
    EXPECT_EQ(fs::read_symlink(file() + ".corrupt-1"), home_ / "target");
    EXPECT_EQ(test::readFile(home_ / "target"), "text");
}

TEST_F(UserPreferences, AFolderOrPipeInTheFilesPlaceIsAnError) {
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

TEST_F(UserPreferences, WhatCouldNotBeStoredIsStoredByTheNextCall) {
    fs::create_directories(folder());
    const unsigned user = geteuid() == 0 ? 65534 : 0;  // root may write to a read-only folder
    if (user != 0) {
        for (const std::string& path : {home_.path(), home_ / "Library", folder()}) {
            ASSERT_EQ(chown(path.c_str(), user, user), 0);
        }
    }
    const test::ProcessResult result =
        test::run({PREFERENCES_DRIVER, "user", NAME, "set", "First", "1", "run", "chmod 0555 " + folder(), "sync",
                   "get", "First", "run", "chmod 0755 " + folder(), "set", "Second", "2", "sync"},
                  {"", "/", {}, {}, user});
    EXPECT_EQ(result.out, "0\n1\n1\n") << result.err;
    EXPECT_EQ(result.err, "CFPreferencesSynchronize: " + file() + ": Permission denied\n");
    EXPECT_EQ(python("p", file()), "{'First': '1', 'Second': '2'}");
}

TEST_F(UserPreferences, WithoutAHomeVariableTheUserDatabaseSaysWhere) {
    const test::PrivateRoot root;
    const std::string uid = std::to_string(getuid());
    test::writeFile(root / "passwd", "somebody:x:" + uid + ":" + uid + "::/Library/home:/bin/sh\n");
    const auto run = [&](const std::vector<std::string>& home, const std::string& passwd) {
        std::vector<std::string> arguments{"--tmpfs", "/etc"};
        arguments.insert(arguments.end(), home.begin(), home.end());
        if (!passwd.empty()) {
            arguments.insert(arguments.end(), {"--ro-bind", passwd, "/etc/passwd"});
        }
        return test::run(root.wrap({PREFERENCES_DRIVER, "user", NAME, "set", "Lang", "fr", "sync"}, arguments));
    };
    EXPECT_EQ(run({"--unsetenv", "HOME"}, root / "passwd").out, "1\n");
    EXPECT_EQ(python("p", root / "Library/home/Library/Preferences/com.corvane.test.plist"), "{'Lang': 'fr'}");
    EXPECT_EQ(run({"--setenv", "HOME", "relative"}, root / "passwd").out, "1\n");
    EXPECT_THAT(run({"--unsetenv", "HOME"}, "").err, HasSubstr("the current user has no home folder"));
}

TEST_F(UserPreferences, ThreadsLoseNothing) {
    constexpr int COUNT = 20;
    const auto work = [](const std::string& prefix) {
        for (int i = 0; i < COUNT; ++i) {
            setText(prefix + std::to_string(i), "x");
            EXPECT_TRUE(synchronize());
        }
    };
    std::thread first(work, "a");
    std::thread second(work, "b");
    first.join();
    second.join();
    EXPECT_EQ(python("len(p)", file()), std::to_string(2 * COUNT));
}

TEST_F(UserPreferences, ProcessesThatWriteAtTheSameTimeLoseNothing) {
    constexpr int COUNT = 20;
    const auto work = [](const std::string& prefix) {
        std::vector<std::string> command{PREFERENCES_DRIVER, "user", NAME};
        for (int i = 0; i < COUNT; ++i) {
            command.insert(command.end(), {"set", prefix + std::to_string(i), "x", "sync"});
        }
        const test::ProcessResult result = test::run(command);
        EXPECT_EQ(result.out.size(), 2U * COUNT) << result.err;
        EXPECT_EQ(result.err, "");
    };
    std::vector<std::thread> writers;
    for (const char* prefix : {"a", "b", "c"}) {
        writers.emplace_back(work, prefix);
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(python("len(p)", file()), std::to_string(3 * COUNT));
    EXPECT_EQ(namesIn(folder()).size(), 1U);
}

TEST_F(UserPreferences, AWriterKilledAtAnyMomentLeavesAWholeFile) {
    constexpr int KILLS = 60;
    setText("Other", "kept");
    ASSERT_TRUE(synchronize());
    std::mt19937 random(1);
    for (int kill = 0; kill < KILLS; ++kill) {
        const ino_t inode = statusOf(file()).st_ino;
        const pid_t writer = fork();
        if (writer == 0) {
            execl(PREFERENCES_DRIVER, PREFERENCES_DRIVER, "user", NAME, "count", "1000000", nullptr);
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
        fs::copy_file(file(), home_ / ("seen-" + std::to_string(kill)));
    }
    const std::string script = R"(
import plistlib, sys
for number in range(int(sys.argv[2])):
    p = plistlib.load(open(sys.argv[1] + str(number), 'rb'))
    assert p['Other'] == 'kept', number
    assert p['Text'] == chr(ord('a') + p['Counter'] % 26) * 50000, number
)";
    const test::ProcessResult result = test::run({"python3", "-c", script, home_ / "seen-", std::to_string(KILLS)});
    EXPECT_EQ(result.exitStatus, 0) << result.err;

    setText("Last", "x");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(namesIn(folder()), (std::vector<std::string>{"com.corvane.test.plist"})) << "leftovers are removed";
}

TEST_F(UserPreferences, OnlyLeftoversOfItsOwnAreRemoved) {
    const std::vector<std::string> others{".preferences-0123456789abcdef.old", ".preferences-0123456789abcdeF.new",
                                          ".preferences-0123456789abcdef0.new", "com.corvane.test.plist.new"};
    for (const std::string& name : others) {
        test::writeFile(folder() + "/" + name, "x");
    }
    test::writeFile(folder() + "/.preferences-0123456789abcdef.new", "x");
    setText("Lang", "fr");
    ASSERT_TRUE(synchronize());
    std::vector<std::string> expected = others;
    expected.push_back("com.corvane.test.plist");
    EXPECT_THAT(namesIn(folder()), testing::UnorderedElementsAreArray(expected));
}

TEST(MachinePreferences, AreKeptInTheMachinesLibrary) {
    const test::PrivateRoot root;
    const test::ProcessResult result =
        test::run(root.wrap({PREFERENCES_DRIVER, "any", NAME, "set", "Lang", "fr", "sync", "get", "Lang"}));
    EXPECT_EQ(result.out, "1\nfr\n") << result.err;
    EXPECT_EQ(python("p", root / "Library/Preferences/com.corvane.test.plist"), "{'Lang': 'fr'}");
    EXPECT_EQ(modeOf(root / "Library/Preferences"), 0755U);
}

TEST(MachinePreferences, OfTheUserOnThisHostCarryTheMachinesIdentifier) {
    const test::PrivateRoot root;
    test::writeFile(root / "machine-id", "00112233445566778899aabbccddeeff\n");
    const std::vector<std::string> arguments{"--tmpfs",         "/etc",     "--ro-bind", root / "machine-id",
                                             "/etc/machine-id", "--setenv", "HOME",      "/Library"};
    const std::vector<std::string> command{
        PREFERENCES_DRIVER, "host", NAME, "set", "Lang", "fr", "sync", "get", "Lang"};
    EXPECT_EQ(test::run(root.wrap(command, arguments)).out, "1\nfr\n");
    EXPECT_EQ(python("p", root / ("Library/Library/Preferences/ByHost/com.corvane.test."
                                  "00112233-4455-6677-8899-AABBCCDDEEFF.plist")),
              "{'Lang': 'fr'}");
    EXPECT_THAT(test::run(root.wrap(command, {"--tmpfs", "/etc"})).err, HasSubstr("has no identifier"));
}

TEST(MachinePreferences, AFullDiskKeepsTheOldFile) {
    const test::PrivateRoot root;
    const std::string file = "/Library/Preferences/com.corvane.test.plist";
    const std::string script = "set -e; driver=$1; $driver any com.corvane.test set Old 1 sync; cp " + file +
                               " /Applications/before; dd if=/dev/zero of=/Library/fill bs=4096 2>/dev/null || true;"
                               "$driver any com.corvane.test set New \"$(head -c 20000 /dev/zero | tr '\\0' x)\" sync"
                               " run 'cp " +
                               file +
                               " /Applications/full; ls -A /Library/Preferences >"
                               " /Applications/names; rm /Library/fill' sync; cp " +
                               file + " /Applications/after";
    const test::ProcessResult result = test::run(
        root.wrap({"sh", "-c", script, "sh", PREFERENCES_DRIVER}, {"--size", "262144", "--tmpfs", "/Library"}));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "1\n0\n1\n");
    EXPECT_EQ(result.err, "CFPreferencesSynchronize: " + file + ": No space left on device\n");
    EXPECT_EQ(test::readFile(root / "Applications/full"), test::readFile(root / "Applications/before"));
    EXPECT_EQ(test::readFile(root / "Applications/names"), "com.corvane.test.plist\n");
    EXPECT_EQ(python("p['Old'], len(p['New'])", root / "Applications/after"), "1 20000");
}

}  // namespace
