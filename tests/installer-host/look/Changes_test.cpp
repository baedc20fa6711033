#include "installer-host/look/Changes.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "installer-host/report/JsonReport.h"
#include "installer-host/report/ShowText.h"
#include "installer-host/report/TextReport.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

using namespace host;
using nlohmann::json;

void shell(const test::TempDir& root, const std::string& script) {
    test::ProcessOptions options;
    options.workingFolder = root.path();
    const test::ProcessResult result = test::run({"sh", "-ec", script}, options);
    ASSERT_EQ(result.exitStatus, 0) << script << "\n" << result.err;
}

/// What the text report says of preferences, files and problems.
std::string textOf(const RunResult& result) {
    const std::string text = runText(result);
    std::string told;
    for (const char* heading : {"\nPreferences (", "\nFiles and folders (", "\nProblems"}) {
        const std::size_t begin = text.find(heading);
        if (begin != std::string::npos) {
            const std::size_t first = text.find('\n', begin + 1) + 1;
            const std::string part = text.substr(first, text.find("\n\n", first) + 1 - first);
            told += part == "  nothing changed\n" ? "" : part;
        }
    }
    return told;
}

/// What changed between two looks at a root that two shell scripts made and changed. Checks that the JSON report tells
/// as many changes as it counts.
std::string changesOf(const std::string& before, const std::string& change, bool verbose = false) {
    const test::TempDir folder;
    shell(folder, before);
    const RootFolder root(folder.path());
    const Look first = look(root, {"/"});
    shell(folder, change);
    RunResult result;
    result.changes = compare(first, look(root, {"/"}, &first), verbose);
    const json report = json::parse(jsonText(runDocument(result, {})));
    std::map<std::string, std::size_t> counts{
        {"created", 0}, {"removed", 0}, {"changed", 0}, {"moved", 0}, {"times", 0}};
    for (const json& entry : report["entries"]) {
        ++counts[entry["change"]];
    }
    for (const auto& [kind, count] : counts) {
        EXPECT_EQ(report["counts"][kind], count) << kind;
    }
    EXPECT_EQ(report["changed"], report["entries"].size() > counts["times"]);
    shell(folder, "chmod -R u+rwx .");
    return textOf(result);
}

constexpr const char* LIST = R"sh(plist() { mkdir -p "$(dirname "$1")"; echo "<plist><dict>$2</dict></plist>" >"$1"; }
repeat() { yes "$2" | head -n "$1"; }
many() { plist "$1" "<key>a</key>$(repeat 50 '<array>'; repeat 500000 '<true/>'; repeat 50 '</array>')"; }
)sh";

TEST(Changes, AreAllToldAndNothingElse) {
    const struct {
        const char* before;
        const char* change;
        const char* told;
    } cases[] = {
        {"mkdir -p a/b; echo 1 >a/b/c", "true", ""},
        {"mkdir a", "cd a; echo 1 >f; mkdir d; ln -s f l; mkfifo p",
         "  + folder /a/d\n  + file /a/f, 2 bytes\n  + link /a/l -> f\n  + FIFO /a/p\n"},
        {"mkdir -p a/b; echo 1 >a/b/c; ln -s x l", "rm -r a l",
         "  - folder /a\n  - folder /a/b\n  - file /a/b/c\n  - link /l\n"},
        {"echo 1 >f; echo 1 >g; echo 1 >h", "echo 12 >f; echo 2 >g; touch h; touch -d 2001-01-01 h",
         "  ~ file /f: contents 2 -> 3 bytes\n  ~ file /g: contents or times (2 bytes before and after)\n"
         "  ~ file /h: contents or times (2 bytes before and after)\n"},
        {"echo 1 >f; touch -d 2001-01-01 f", "echo 2 >f; touch -d 2001-01-01 f",
         "  ~ file /f: contents or times (2 bytes before and after)\n"},
        {"echo 1 >f", "echo 2 >g; mv g f", "  ~ file /f: contents or times (2 bytes before and after)\n"},
        {"echo 1 >f; mkdir d; chmod 755 d; chmod 600 f", "chmod 4711 f; chmod 1777 d",
         "  ~ folder /d: mode 0755 -> 1777\n  ~ file /f: mode 0600 -> 4711\n"},
        {"ln -s a l", "rm l; ln -s 'b\n' l", "  ~ link /l: target a -> b\\n\n"},
        {"touch f; setfattr -n user.a -v 1 f; setfattr -n user.b -v 1 f",
         "setfattr -x user.a f; setfattr -n user.b -v 2 f; setfattr -n user.c f; chmod 600 f",
         "  ~ file /f: mode 0644 -> 0600, attribute user.a removed, attribute user.b\n"
         "      changed, attribute user.c added\n"},
        {"echo 1 >f", "ln f g; rm f; mv g h", "  > file /f -> /h\n"},
        {"echo 1 >f; echo 2 >g", "mv f g", "  > file /f -> /g, in place of a file\n"},
        {"echo 1 >f; echo 12 >g", "mv f t; mv g f; mv t g", "  > file /g -> /f\n  > file /f -> /g\n"},
        {"echo 1 >f", "ln f g", "  + file /g, 2 bytes\n"},
        {"echo 1 >f; ln f g", "rm g", "  - file /g\n"},
        {"mkdir -p a/b/c; echo 1 >a/b/f; echo 1 >a/b/g; touch a/b/h",
         "mv a z; mv z/b z/y; echo 12 >z/y/f; rm z/y/g; echo 1 >z/y/n",
         "  - file /a/b/g\n  > folder /a -> /z\n  > folder /a/b -> /z/y\n  ~ file /z/y/f: contents 2 -> 3 bytes\n"
         "  + file /z/y/n, 2 bytes\n"},
        {"mkdir d; touch -d 2001-01-01 d", "touch d; touch d/t; rm d/t", ""},
        {"mkdir d; touch d/f", "rm -r d; mkdir d; touch d/f",
         "  ~ file /d/f: contents or times (0 bytes before and after)\n"},
        {"plist a/x.plist '<key>k</key><integer>1</integer>'",
         "plist a/x.plist '<key>k</key><string>1</string><key>n</key><true/>'",
         "  /a/x.plist\n    ~ \"k\" = 1 (integer) -> \"1\" (string)\n    + \"n\" = true (boolean)\n"
         "  ~ file /a/x.plist: contents 61 -> 78 bytes\n"},
        {"plist Library/Preferences/d.plist '<key>k</key><true/>'",
         "python3 -c 'import "
         "plistlib,sys;plistlib.dump({\"k\":True},open(\"Library/Preferences/"
         "d.plist\",\"wb\"),fmt=plistlib.FMT_BINARY)'",
         "  d\n      \"k\" = true (boolean), unchanged\n  ~ file /Library/Preferences/d.plist: contents 48 -> 49 "
         "bytes\n"},
        {"plist Library/Preferences/d.plist '<key>k</key><true/>'",
         "cp Library/Preferences/d.plist t; mv t Library/Preferences/d.plist",
         "  d\n      \"k\" = true (boolean), unchanged\n"},
        {"plist Library/Preferences/d.plist '<key>k</key><true/>'; plist o.plist",
         "rm Library/Preferences/d.plist; mv o.plist p.plist",
         "  d\n    - \"k\" = true (boolean)\n  - file /Library/Preferences/d.plist\n  > file /o.plist -> /p.plist\n"},
        {"plist Library/Preferences/d.plist '<key>k</key><true/>'", "echo damaged >Library/Preferences/d.plist",
         "  ~ file /Library/Preferences/d.plist: contents 48 -> 8 bytes\n"
         "  /Library/Preferences/d.plist cannot be read: it is not an XML property list:\n"
         "      syntax error in line 1\n"},
        {"mkdir -p 'a\n\33[31m'; touch \"$(printf 'b\\342\\200\\256\\377')\"", "rm -r a* b*",
         "  - folder /a\\n\\x1b[31m\n  - file /b\\xe2\\x80\\xae\\xff\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(changesOf(std::string(LIST) + c.before, std::string(LIST) + c.change), c.told) << c.change;
    }
}

/// What a report has no room for is told as a change of the file, and that its keys are not known.
TEST(Changes, OfTooManyValuesAreNamed) {
    const std::string list = "/Library/Preferences/d.plist", unknown = "cannot be read: it is too large\n";
    const struct {
        const char* before;
        const char* change;
        bool isVerbose;
        std::string told;
    } cases[] = {
        {"", "many o.plist; plist p.plist '<key>k</key><true/>'", false,
         "  /p.plist\n    + \"k\" = true (boolean)\n  + file /o.plist, 4000890 bytes\n  + file /p.plist, 48 bytes\n  "
         "/o.plist " +
             unknown},
        {"plist Library/Preferences/d.plist; touch f", "many Library/Preferences/d.plist; rm f", false,
         "  ~ file " + list + ": contents 29 -> 4000890 bytes\n  - file /f\n  " + list + " " + unknown},
        {"many Library/Preferences/d.plist", "plist Library/Preferences/d.plist", false,
         "  ~ file " + list + ": contents 4000890 -> 29 bytes\n  " + list + " " + unknown},
        {"many Library/Preferences/d.plist", "touch f", false, "  + file /f, 0 bytes\n"},
        {"many Library/Preferences/d.plist", "touch f", true, "  + file /f, 0 bytes\n  " + list + " " + unknown},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(changesOf(std::string(LIST) + c.before, std::string(LIST) + c.change, c.isVerbose), c.told)
            << c.change;
    }
}

TEST(Changes, LeaveTheStatusToFilesThatChanged) {
    const test::TempDir folder;
    shell(folder, std::string(LIST) + "many Library/Preferences/d.plist");
    const Look before = look(RootFolder(folder.path()), {"/"});
    const Changes changes = compare(before, before, true);
    ASSERT_EQ(changes.unreadable.size(), 1U);
    EXPECT_EQ(changes.unreadable[0].kind, Unreadable::Kind::Older) << "-v changes no exit status";
}

TEST(ValueBudget, IsEnoughForAHundredThousandKeysThatChange) {
    const std::string path = "/Library/Preferences/com.corvane.audioplugins.Ambrel.plist";
    ValueBudget budget;
    cv::plist::Dictionary keys;
    for (int i = 0; i < 100'005; ++i) {
        keys.emplace("key " + std::to_string(i), cv::plist::Value{std::string("value")});
    }
    EXPECT_TRUE(budget.spend(path, keys)) << "before";
    EXPECT_TRUE(budget.spend(path, keys)) << "after";
    EXPECT_FALSE(budget.spend(path, keys)) << "of another file";
    EXPECT_TRUE(budget.spend(path, {{"key", {true}}})) << "what was refused takes nothing";
}

/// Every kind of thing that becomes another kind under the same name.
TEST(Changes, OfOneKindIntoEachOther) {
    struct Kind {
        const char* name;
        const char* make;
        const char* details;  ///< what the report adds of a new one
    };
    std::vector<Kind> kinds{
        {"file", "echo 1 >", ", 2 bytes"},
        {"folder", "mkdir ", ""},
        {"link", "ln -s to ", " (to)"},
        {"FIFO", "mkfifo ", ""},
        {"socket", "python3 -c 'import socket,sys;socket.socket(socket.AF_UNIX).bind(sys.argv[1])' ", ""},
    };
    if (geteuid() == 0) {
        kinds.push_back({"character device", "mkdev() { mknod $1 c 1 3; }; mkdev ", ", 1:3"});
    }
    std::string before = "true", change = "true", told;
    for (const Kind& old : kinds) {
        for (const Kind& now : kinds) {
            if (&old != &now) {
                const std::string name = std::to_string(&old - &kinds[0]) + std::to_string(&now - &kinds[0]);
                before += std::string("; ") + old.make + name;
                change += "; rm -r " + name + "; " + now.make + name;
                told += "  ~ /" + name + ": " + old.name + " -> " + now.name + now.details + "\n";
            }
        }
    }
    EXPECT_EQ(changesOf(before, change), told);
}

TEST(Changes, OfTimesAloneAreToldWhenAskedFor) {
    const std::string before = "mkdir -p d e Library/Preferences; ln -s x l; touch -hd 2001-01-01 d e l; plist p.plist";
    const std::string told = changesOf(LIST + before, "touch -hd 2002-02-03T04:05:06Z d l p.plist; touch e/f", true);
    EXPECT_EQ(changesOf(LIST + before, "touch -hd 2002-02-03 d l p.plist"), "");
    EXPECT_EQ(told.find("  ~ folder /d: times, modified 2001-01-01T00:00:00.000000000Z ->\n"
                        "      2002-02-03T04:05:06.000000000Z\n  + file /e/f, 0 bytes\n  ~ link /l: times"),
              0U)
        << told;
    EXPECT_NE(told.find("  ~ file /p.plist: times"), std::string::npos);
}

/// Changes root/d and root/f, between looks that a hindrance keeps from seeing them.
std::string hindered(const std::function<void(const std::string&)>& first, const std::function<void()>& second) {
    const test::TempDir folder;
    shell(folder, "mkdir -p d/e Library/Preferences; echo 1 >d/f; echo '<plist><dict/></plist>' >p.plist; chmod 777 .");
    const RootFolder root(folder.path());
    first(folder.path());
    const Look before = look(root, {"/"});
    std::filesystem::permissions(folder / "d", std::filesystem::perms::owner_all);
    std::filesystem::permissions(folder / "p.plist", std::filesystem::perms::owner_all);
    // Sanitizers need descriptors too, the first time that they see an object of a type.
    static_cast<void>(compare(before, look(root, {"/"}, &before), false));
    second();
    RunResult result;
    result.changes = compare(before, look(root, {"/"}, &before), false);
    return textOf(result);
}

TEST(Changes, OfWhatCannotBeReadAreNotMadeUp) {
    const auto nothing = [] {};
    EXPECT_TRUE(test::holdsForOrdinaryUser([&] {
        const std::string told = hindered(
            [](const std::string& root) {
                std::filesystem::permissions(root + "/d", std::filesystem::perms::none);
                std::filesystem::permissions(root + "/p.plist", std::filesystem::perms::none);
            },
            nothing);
        return told ==
               "  ~ folder /d: mode 0000 -> 0700\n  ~ file /p.plist: mode 0000 -> 0700\n"
               "  /d cannot be read: Permission denied\n  /p.plist cannot be read: Permission denied\n";
    }));
    EXPECT_TRUE(test::holdsInACopy([&] {
        const std::string told = hindered([](const std::string&) {},
                                          [] {
                                              const rlimit none{0, 0};
                                              setrlimit(RLIMIT_NOFILE, &none);
                                          });
        return told.find("cannot be read: Too many open files") != std::string::npos &&
               told.find("- ") == std::string::npos;
    }));
}

TEST(Snapshot, OfTooManyValuesIsIncomplete) {
    const test::TempDir folder;
    shell(folder, std::string(LIST) + "many Library/Preferences/d.plist; plist Library/Preferences/e.plist");
    const Snapshot snapshot = takeSnapshot(RootFolder(folder.path()));
    EXPECT_FALSE(snapshot.isComplete());
    EXPECT_EQ(unreadableText(snapshot), "Problems\n  d cannot be read: it is too large\n");
}

TEST(Snapshot, OfAClosedFolderIsIncomplete) {
    for (const char* closed : {"", "/Library", "/Library/Preferences", "/Library/Preferences/inner"}) {
        EXPECT_TRUE(test::holdsForOrdinaryUser([&] {
            const test::TempDir folder;
            shell(folder, "mkdir -p Library/Preferences/inner");
            const bool isComplete = takeSnapshot(RootFolder(folder.path())).isComplete();
            std::filesystem::permissions(folder.path() + closed, std::filesystem::perms::none);
            const Snapshot snapshot = takeSnapshot(RootFolder(folder.path()));
            std::filesystem::permissions(folder.path() + closed, std::filesystem::perms::owner_all);
            return isComplete && !snapshot.isComplete() && showText(snapshot, "").find("none") == std::string::npos;
        })) << closed;
    }
}

}  // namespace
