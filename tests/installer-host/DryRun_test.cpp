#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

/// Everything in a root that a user can see, one text: names, kinds, modes, owners, sizes, all times, links,
/// attributes. It is looked at through a read-only view, since looking would change access times.
std::string listing(const InstallRoot& root) {
    const auto look = [&](std::vector<std::string> command) {
        const std::vector<std::string> view{"bwrap", "--ro-bind", "/", "/", "--"};
        command.insert(command.begin(), view.begin(), view.end());
        command.push_back(root.path());
        return run(command).out;
    };
    return look({"getfattr", "-R", "-P", "-d", "-m", "-", "--absolute-names", "--encoding=hex"}) +
           look({"sh", "-c", R"(find "$0" -printf '%p %y %m %U %G %n %s %b %T@ %C@ %A@ %l\n')"});
}

/// What the faulty plug-in's script tells of the root that it sees, and does to what is there.
constexpr const char* SCRIPT = R"(
cd /Library
find . ../Applications -printf '%p %y %m %U %G %n %s %b %T@ %l\n' | sort
getfattr -h -R -P -d -m - --encoding=hex . ../Applications
find . ../Applications -type f -size -1M -exec cksum {} + | sort
mv sealed moved
mv fifo ../Applications/fifo
rm dangling socket
ln -s fifo link
echo more >>"hard link"
chmod 711 set-user-id
chgrp 0 special || :
rm -r folder
ln -s / folder
printf x | dd of=sparse bs=1 seek=5000000 conv=notrunc status=none
cp -a Preferences copy
)";

/// Makes what a C++ program makes less easily. The access list is
/// user::rw-,user:65534:rw-,group::r--,mask::rw-,other::r--.
constexpr const char* REST = R"sh(
cd "$0/Library"
ids=ffffffff
list=0x0200000001000600${ids}02000600feff000004000400${ids}10000600${ids}20000400${ids}
setfattr -n system.posix_acl_access -v $list listed
setfattr -n system.posix_acl_default -v $list folder
setfattr -n user.long -v "$(printf %2000d 0)" listed
chmod 6755 set-user-id
python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket")'
: >special
if [ "$(id -u)" = 0 ]; then
    rm special
    mknod special c 1 7
    chown -h 4321:1234 special dangling folder
fi
)sh";

/// A root with one of everything, all of it old: an access time that changes is then seen under relatime, too.
void fill(const InstallRoot& root) {
    root.makeVendorFolder();
    root.writeStatus("UpdatesEnabled");
    fs::copy(PLUGIN_BUNDLE, root / "Library/a.bundle", fs::copy_options::recursive);
    writeFile(root.preferenceFile("com.corvane.updater"), "<plist><dict><key>Old</key><true/></dict></plist>");
    writeFile(root / "Library/read-only", "x");
    writeFile(root / "Library/sealed/inside", "x");
    fs::create_hard_link(root / "Library/read-only", root / "Library/hard link");
    fs::create_symlink("nowhere", root / "Library/dangling");
    fs::create_symlink("/Library/Preferences", root / "Applications/link");
    ASSERT_EQ(mkfifo((root / "Library/fifo").c_str(), 0640), 0);
    writeFile(root / "Library/folder/with/a file", "x");
    writeFile(root / "Library/set-user-id", "x");
    writeFile(root / "Library/listed", "x");
    const ProcessResult more = run({"sh", "-euc", REST, root.path()});
    ASSERT_EQ(more.exitStatus, 0) << more.err;
    setFinderInfo(root / "Applications/Corvane", "0x" + std::string(16, '0') + "0100" + std::string(44, '0'));
    ASSERT_EQ(run({"truncate", "-s", "5G", root / "Library/sparse"}).exitStatus, 0);
    fs::permissions(root / "Library/read-only", fs::perms::owner_read);
    fs::permissions(root / "Library/sealed", fs::perms::owner_read | fs::perms::owner_exec);
    const ProcessResult aged =
        run({"find", root.path(), "-depth", "-exec", "touch", "-h", "-d", "2001-02-03 04:05:06.789", "{}", "+"});
    ASSERT_EQ(aged.exitStatus, 0) << aged.err;
}

TEST(DryRun, ChangesNothingAndReportsWhatWouldChange) {
    const InstallRoot root;
    fill(root);
    const std::string before = listing(root);
    const ProcessResult result = runHost(
        {"run", "--product=5100", "--root", root.path(), "--dry-run", "--language=6", root / "Library/a.bundle"});
    const std::string after = listing(root);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(before, after);
    EXPECT_THAT(result.out, HasSubstr("dry run"));
    EXPECT_THAT(result.out, HasSubstr("    + \"Lang\" = \"es\" (string)\n"));

    fs::permissions(root / "Library/sealed", fs::perms::owner_all);
}

/// The report without times, which differ from one run to the next.
json timeless(const std::string& report) {
    return json::parse(report, [](int, json::parse_event_t event, json& value) {
        if (event == json::parse_event_t::object_end) {
            for (const char* time : {"started", "milliseconds", "modified", "dryRun"}) {
                value.erase(time);
            }
        }
        return true;
    });
}

TEST(DryRun, ReportsWhatTheRunDoes) {
    const InstallRoot root;
    fill(root);
    writeFile(root / "Library/script", SCRIPT);
    writeFile(root / "Library/plugin-fault", "script");
    std::vector<std::string> arguments{"run",    "--product=1", "--step=pre",  "--format=json",
                                       "--root", root.path(),   FAULTY_BUNDLE, "--dry-run"};
    const ProcessResult would = runHost(arguments);
    arguments.pop_back();
    const ProcessResult does = runHost(arguments);
    EXPECT_EQ(does.exitStatus, 0) << does.err;
    EXPECT_THAT(does.err, HasSubstr("| ./sparse f 644 "));
    EXPECT_EQ(would.err, does.err) << "the script sees another root";
    EXPECT_EQ(timeless(would.out), timeless(does.out));
    EXPECT_EQ(json::parse(would.out)["dryRun"], true);
    EXPECT_GE(json::parse(does.out)["entries"].size(), 10U);
}

TEST(DryRun, LeavesNoCopyBehind) {
    const InstallRoot root;
    const TempDir temporary;
    fill(root);
    ProcessOptions options;
    options.set = {{"TMPDIR", temporary.path()}};
    EXPECT_EQ(install(root, {"--dry-run"}, options).exitStatus, 0);

    // The post-install step waits for the writer of a pipe.
    fs::remove(root.statusPath());
    ASSERT_EQ(mkfifo(root.statusPath().c_str(), 0600), 0);
    const ProcessResult waiting = install(root, {"--dry-run", "--timeout=1"}, options);
    EXPECT_EQ(waiting.exitStatus, 9);
    EXPECT_THAT(waiting.out, HasSubstr("InstalledProducts/Ambrel/CurrentVersion")) << "what was done is reported";
    const ProcessResult interrupted = run({"timeout", "-s", "INT", "2", HOST_PROGRAM, "run", "--product=5100",
                                           "--dry-run", "--root", root.path(), PLUGIN_BUNDLE},
                                          options);
    EXPECT_EQ(interrupted.exitStatus, 124) << "its user ends the program, with a copy in use";
    EXPECT_TRUE(fs::is_empty(temporary.path()));

    // A place in the root would change it, and be copied into itself.
    for (const char* place : {"", "Library", "Applications/Corvane"}) {
        options.set = {{"TMPDIR", root / place}};
        const std::string before = listing(root);
        EXPECT_EQ(install(root, {"--dry-run", "--step=pre"}, options).exitStatus, 0);
        EXPECT_EQ(before, listing(root)) << place;
    }

    options.set = {{"TMPDIR", temporary / "missing"}};
    const ProcessResult noPlace = install(root, {"--dry-run"}, options);
    EXPECT_EQ(noPlace.exitStatus, 6);
    EXPECT_THAT(noPlace.err, HasSubstr("Set TMPDIR to a folder"));
    fs::permissions(root / "Library/sealed", fs::perms::owner_all);
}

}  // namespace
