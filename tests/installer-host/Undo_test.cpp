#include <gmock/gmock.h>

#include <filesystem>

#include "tests/installer-host/HostSupport.h"
#include "tests/support/KilledCommand.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

/// Everything in a root, one text: names, kinds, modes, owners, links, contents, attributes, times of property lists.
std::string stateOf(const std::string& root) {
    const char* const script = R"sh(
cd "$0"
find . -printf '%p %y %m %U %G %l\n' | LC_ALL=C sort
find . -type f -exec cksum {} + | sort
find . -name '*.plist' -printf '%p %T@\n' | sort
getfattr -h -R -P -d -m - --encoding=hex . 2>&1)sh";
    return run({"sh", "-c", script, root}).out;
}

/// A root, and a place outside it for the journals of its runs.
class Machine {
public:
    std::string root() const { return folder_ / "root"; }
    std::string operator/(const std::string& name) const { return root() + "/" + name; }
    std::string journal(const std::string& name = "journal") const { return folder_ / name; }

    /// Does what a shell script says, in the root and with Python's plistlib at hand: `store FILE EXPRESSION` changes
    /// the dictionary `p` of a property list in /Library/Preferences.
    void script(const std::string& text) const {
        const std::string functions = R"sh(
store() { python3 -c "import plistlib,sys
f='Library/Preferences/$1.plist'
p=plistlib.load(open(f,'rb'))
$2
plistlib.dump(p,open(f,'wb'),fmt=plistlib.FMT_BINARY)"; }
mkdir -p Library/Preferences Applications/Corvane
icon=Applications/Corvane/$(printf 'Icon\r')
)sh";
        fs::create_directories(root());
        ProcessOptions options;
        options.workingFolder = root();
        const ProcessResult result = run({"sh", "-euc", functions + text}, options);
        ASSERT_EQ(result.exitStatus, 0) << text << result.err;
    }

    std::vector<std::string> installCommand(const std::string& name = "journal", const char* product = "5100") const {
        return {"run", "--product", product, "--root", root(), "--journal", journal(name), PLUGIN_BUNDLE};
    }
    std::vector<std::string> undoCommand(const std::string& name = "journal") const {
        return {"undo", journal(name), "--root", root(), "--format", "json"};
    }

    void install(const std::string& name = "journal", const char* product = "5100") const {
        const ProcessResult result = runHost(installCommand(name, product));
        ASSERT_EQ(result.exitStatus, 0) << result.err;
        keepJournal(journal(name));
    }

    /// What an undo that ends with `exitStatus` reports.
    json undo(const std::string& name = "journal", int exitStatus = 0) const {
        const ProcessResult result = runHost(undoCommand(name));
        EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
        keepJournal(journal(name));
        return json::parse(result.out);
    }

private:
    TempDir folder_;
};

/// Prior values of each type that a property list can have, three for each root; none where there are fewer.
constexpr const char* PRIOR_VALUES = R"(
import datetime, os, plistlib, sys
utc = datetime.datetime(2001, 2, 3, 4, 5, 6)
values = ["fr\u00e9 \U0001f50a", 2, -2**63, 2**64 - 1, 1.5, float("nan"), float("-inf"), False, utc, b"\0\xff",
          ["a", {"b": b""}], {"c/d": [1], "": {}}, utc + datetime.timedelta(microseconds=250000), plistlib.UID(70000)]
base, domain, name, number = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4])
for i in range(5):
    three = values[3 * i:3 * i + 3]
    exact = i == 4 or (i + number) % 2  # what XML cannot tell
    folder = f"{base}/{i}/Library/Preferences/"
    vendor = f"{base}/{i}/Applications/Corvane"
    os.makedirs(folder)
    os.makedirs(vendor)
    open(vendor + "/Icon\r", "w").close()
    os.setxattr(vendor, "user.com.apple.FinderInfo", bytes(range(8)) + bytes([4 * (i % 2), i]) + bytes(range(22)))
    updater = {"Kept": values[:12], "InstalledProducts/" + name + "/CurrentVersion": three[0], "UpdateInterval": three[1]}
    files = {"com.corvane.updater": updater, domain: {"Lang": three[2]} if len(three) > 2 else {}}
    for file, keys in files.items():
        form = plistlib.FMT_BINARY if exact else plistlib.FMT_XML
        with open(folder + file + ".plist", "wb") as out:
            plistlib.dump(keys, out, fmt=form)
        os.chmod(out.name, 0o600 + i)
        os.utime(out.name, ns=(10**18, 10**18 + i))
        os.setxattr(out.name, "user.kept", b"x")
)";

/// What Python reads in the preferences of a root, but for the keys named "Since".
std::string preferencesOf(const std::string& root) {
    const char* const script = R"(
import pathlib, plistlib, sys
for file in sorted(pathlib.Path(sys.argv[1]).glob("Library/Preferences/*.plist")):
    keys = plistlib.loads(file.read_bytes())
    print(file.name, [item for item in sorted(keys.items()) if item[0] != "Since"]))";
    return run({"python3", "-c", script, root}).out;
}

TEST(Undo, LeavesEveryRootAsItWas) {
    const struct {
        const char* product;
        const char* domain;
        const char* name;
    } cases[] = {
        {"6300", "com.corvane.audioplugins.Beatwell", "Beatwell"},
        {"3100", "com.corvane.audioapps.Mender", "Corvane Mender"},
        {"5600", "com.corvane.audioapps.Mender2", "Corvane Mender 2"},
        {"3500", "com.corvane.audioplugins.Stratos4", "Stratos4"},
        {"5200", "com.corvane.audioplugins.Coffer", "Coffer"},
        {"5100", "com.corvane.audioplugins.Ambrel", "Ambrel"},
        {"7700", "com.corvane.audioplugins.AmbrelLite", "Ambrel Lite"},
        {"5000", "com.corvane.clarifier", "CLR"},
        {"4900", "com.corvane.audioplugins.Temper", "Temper"},
    };
    int number = 0;
    for (const auto& c : cases) {
        const TempDir base;
        const ProcessResult made =
            run({"python3", "-c", PRIOR_VALUES, base.path(), c.domain, c.name, std::to_string(number++)});
        ASSERT_EQ(made.exitStatus, 0) << made.err;
        for (const char* root : {"0", "1", "2", "3", "4", "none"}) {
            SCOPED_TRACE(std::string(c.product) + " " + root);
            fs::create_directories(base / root + "/Library");
            fs::create_directories(base / root + "/Applications");
            const std::string before = stateOf(base / root), keys = preferencesOf(base / root);
            const std::string journal = base / "journal" + root;
            const auto install = [&] {
                return runHost(
                    {"run", "--product", c.product, "--root", base / root, "--journal", journal, PLUGIN_BUNDLE});
            };
            ASSERT_EQ(install().exitStatus, 0);
            EXPECT_NE(stateOf(base / root), before);
            const ProcessResult undone = runHost({"undo", journal, "--root", base / root});
            EXPECT_EQ(undone.exitStatus, 0) << undone.err;
            EXPECT_THAT(undone.out, HasSubstr("\nLeft alone\n  nothing\n"));
            EXPECT_EQ(stateOf(base / root), before);
            if (number != 1 || root[0] == 'n') {
                continue;
            }
            // Another program stores a key in between: each value comes back by itself.
            fs::remove(journal);
            ASSERT_EQ(install().exitStatus, 0);
            for (const char* domain : {"com.corvane.updater", c.domain}) {
                const std::string since =
                    "import plistlib,sys\np=plistlib.load(open(sys.argv[1],'rb'))\np['Since']=1\n"
                    "plistlib.dump(p,open(sys.argv[1],'wb'),fmt=plistlib.FMT_BINARY)";
                run({"python3", "-c", since, base / root + "/Library/Preferences/" + domain + ".plist"});
            }
            EXPECT_EQ(runHost({"undo", journal, "--root", base / root}).exitStatus, 0);
            EXPECT_EQ(preferencesOf(base / root), keys);
        }
    }
}

/// "key UpdateInterval", "file", ... of each item; of those that were left, with the reason.
std::string told(const json& items) {
    std::string text;
    for (const json& item : items) {
        text += item["what"].get<std::string>() + (item["what"] == "key" ? " " + item["name"].get<std::string>() : "") +
                (item.contains("reason") ? ": " + item["reason"].get<std::string>() : "") + "\n";
    }
    return text;
}

TEST(Undo, LeavesAloneWhatWasChangedSince) {
    const std::string version = "key InstalledProducts/Ambrel/CurrentVersion\n", interval = "key UpdateInterval\n";
    const std::string lang = "key Lang\nfile\n", finder = "attribute\nattribute\n";
    const struct {
        const char* since;
        std::string restored;
        std::string left;
    } cases[] = {
        {"store com.corvane.updater 'p[\"UpdateInterval\"]=3'", lang + version + finder,
         "key UpdateInterval: it was changed since\n"},
        {"store com.corvane.updater 'del p[\"UpdateInterval\"]'", lang + version + finder,
         "key UpdateInterval: it was removed since\n"},
        {"store com.corvane.updater 'p[\"UpdateInterval\"]=2.0'", lang + version + finder,
         "key UpdateInterval: it was changed since\n"},
        {"store com.corvane.updater 'p[\"UpdateInterval\"]=5'", lang + version + finder, ""},
        {"store com.corvane.audioplugins.Ambrel 'p[\"Other\"]=1'", "key Lang\n" + version + interval + finder, ""},
        {"rm Library/Preferences/*Ambrel.plist", version + interval + finder, ""},
        {"rm Library/Preferences/*updater.plist", lang + finder, "file: it was removed since\n"},
        {"cd Library/Preferences; mv *updater.plist real; ln -s real com.corvane.updater.plist", lang + finder,
         "file: a symbolic link stands in its place\n"},
        {"cd Library/Preferences; rm *updater.plist; mkdir com.corvane.updater.plist", lang + finder,
         "file: something else stands in its place\n"},
        {"echo garbage >Library/Preferences/com.corvane.updater.plist", lang + finder,
         "file: it is not a property list now: "},
        {"mv Library/Preferences Library/Elsewhere; ln -s Elsewhere Library/Preferences", finder,
         "file: Not a directory\nfile: Not a directory\n"},
        {"chmod 640 Library/Preferences/com.corvane.updater.plist", lang + version + interval + finder,
         "mode: it was changed since\n"},
        {"setfattr -n user.com.apple.FinderInfo -v 0x00 Applications/Corvane",
         lang + version + interval + "attribute\n", "attribute: it was changed since\n"},
        {"rm \"$icon\"; ln -s / \"$icon\"", lang + version + interval + "attribute\n",
         "attribute: something else stands in its place\n"},
        {"rm -r Applications/Corvane", lang + version + interval, ""},
        {"setfattr -n user.since -v 1 Library/Preferences/*updater.plist", lang + version + interval + finder, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.since);
        const Machine machine;
        machine.script(
            R"sh(: >"$icon"; echo '<plist><dict><key>UpdateInterval</key><integer>5</integer></dict></plist>' \
            >Library/Preferences/com.corvane.updater.plist)sh");
        const bool hasMode = std::string(c.since).rfind("chmod", 0) == 0;
        if (hasMode) {
            machine.script("chmod 600 Library/Preferences/com.corvane.updater.plist");
        }
        machine.install();
        machine.script(c.since);
        const bool isFault = c.left.find("Not a directory") != std::string::npos;
        const json report = machine.undo("journal", isFault ? 7 : 0);
        EXPECT_EQ(told(report["restored"]), c.restored);
        EXPECT_THAT(told(report["left"]), testing::StartsWith(c.left));
        EXPECT_EQ(told(report["left"]).empty(), c.left.empty());
        const std::string after = stateOf(machine.root());
        const bool hasAttribute = after.find("user.since") != std::string::npos;
        EXPECT_EQ(hasAttribute, std::string(c.since).find("user.since") != std::string::npos);
        EXPECT_EQ(machine.undo("journal", isFault ? 7 : 0)["changed"], false);
        EXPECT_EQ(stateOf(machine.root()), after);
    }
}

TEST(Undo, GoesBackwardsAndUsesAJournalOnce) {
    const Machine machine;
    machine.script("true");
    const std::string before = stateOf(machine.root());
    // Beside the root, though its name begins with the path of the root.
    machine.install("root.first", "5100");
    machine.install("second", "3100");
    const auto expectRefusal = [](const std::vector<std::string>& command, int exitStatus, const std::string& message) {
        const ProcessResult result = runHost(command);
        EXPECT_EQ(result.exitStatus, exitStatus) << result.err;
        EXPECT_THAT(result.err, HasSubstr(message));
    };
    expectRefusal(machine.undoCommand("root.first"), 2, "'" + machine.journal("second") + "' must be undone first");
    expectRefusal(machine.installCommand("root.first"), 6, "exists already");
    const std::string both = stateOf(machine.root());
    fs::copy_file(machine.journal("second"), machine.journal("copy"));
    std::vector<std::string> dryRun = machine.undoCommand("second");
    dryRun.emplace_back("--dry-run");
    machine.script("find . -exec touch -h -a -d 2001-02-03 {} +");
    EXPECT_EQ(json::parse(runHost(dryRun).out)["counts"]["restored"], 3);
    EXPECT_EQ(run({"bwrap", "--ro-bind", "/", "/", "find", machine.root(), "-newerat", "2001-02-04"}).out, "")
        << "read";
    EXPECT_EQ(stateOf(machine.root()), both);

    // A root that was moved takes its record along.
    const std::string moved = machine.root() + ".moved";
    fs::rename(machine.root(), moved);
    expectRefusal({"undo", machine.journal("second"), "--root", machine.journal("")}, 2, "belongs to the root '");
    EXPECT_EQ(runHost({"undo", machine.journal("second"), "--root", moved}).exitStatus, 0);
    fs::rename(moved, machine.root());

    expectRefusal({"undo", machine.journal("root.first"), "--machine"}, 2, "belongs to the root '");
    expectRefusal(machine.undoCommand("copy"), 2, "'" + machine.journal("root.first") + "' must be undone first");
    expectRefusal(machine.undoCommand("none"), 6, "cannot be read: No such file");
    EXPECT_EQ(machine.undo("root.first")["changed"], true);
    EXPECT_EQ(stateOf(machine.root()), before);
    EXPECT_EQ(machine.undo("root.first")["journalState"], "undone");
    expectRefusal(machine.undoCommand("copy"), 2, "has no run left to undo");
    EXPECT_EQ(stateOf(machine.root()), before);
    // What a later run stores is not what the journal put there, although it is the same.
    EXPECT_EQ(runHost({"run", "--product=5100", "--root", machine.root(), PLUGIN_BUNDLE}).exitStatus, 0);
    EXPECT_EQ(machine.undo("root.first")["changed"], false);
}

TEST(Undo, TrustsOnlyAJournalThatIsOne) {
    const Machine machine;
    machine.script("true");
    machine.install();
    const struct {
        const char* change;  ///< what a shell does to the journal $0
        const char* message;
    } cases[] = {
        {"mv $0 $0.real; ln -s $0.real $0", "is a symbolic link"},
        {"mv $0 $0.real; mkdir $0", "is not a file"},
        {"mv $0 $0.real; mkfifo $0", "is not a file"},
        {"cp $0 $0.real; : >$0", "is not a journal that can be read: "},
        {"cp $0 $0.real; head -c 900 $0.real >$0", "is not a journal that can be read: "},
        {"cp $0 $0.real; echo '[1]' >$0", "is not a journal that can be read: "},
        {"cp $0 $0.real; sed -i 's/\"1.0\"/\"2.0\"/' $0", "has version 2.0"},
        {"cp $0 $0.real; sed -i 's|/Library/Pref|/../Pref|' $0", "is not a path"},
        {"cp $0 $0.real; sed -i 's/\"product\": /&1e300, \"was\": /' $0", "product is not a whole number"},
        {"cp $0 $0.real; printf '%0100000d' 0 | tr 0 '[' >$0", "is nested too deeply"},
        {"cp $0 $0.real; sed -i 's/0644/9644/' $0", "is not a journal that can be read: "},
        {"cp $0 $0.real; sed -i 's/\"string\"/\"number\"/' $0", "'number' is not a type"},
        {"cp -p $0 $0.real; chmod 666 $0", "can be written by other users"},
        {"cp -p $0 $0.real; chown 65534 $0 || chmod 666 $0", "other user"},
    };
    const std::string before = stateOf(machine.root());
    EXPECT_EQ(fs::status(machine.journal()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    for (const auto& c : cases) {
        run({"sh", "-c", c.change, machine.journal()});
        const ProcessResult result = runHost(machine.undoCommand());
        EXPECT_EQ(result.exitStatus, 6) << c.change;
        EXPECT_THAT(result.err, HasSubstr(c.message)) << c.change;
        EXPECT_EQ(stateOf(machine.root()), before) << c.change;
        run({"sh", "-c", "rm -rf $0; cp -p $0.real $0; chmod 600 $0; rm $0.real", machine.journal()});
    }
    const ProcessResult busy =
        run({"flock", machine.root(), HOST_PROGRAM, "undo", machine.journal(), "--root", machine.root()});
    EXPECT_EQ(busy.exitStatus, 6);
    EXPECT_THAT(busy.err, HasSubstr("another run with a journal, or an undo, works on"));
    EXPECT_EQ(machine.undo()["counts"]["failed"], 0);
}

TEST(Undo, SaysWhatAJournalDoesNotHold) {
    const Machine machine;
    machine.script(R"sh(printf script >Library/plugin-fault
cat >Library/script <<'end'
echo begun
cd /Library
rmdir empty
chmod 700 kept
echo more >>notes
chmod 600 notes
mv moved away
rm Preferences/removed.plist
mkdir -p made/inside/deep
echo '<plist><dict/></plist>' >large.plist
echo '<plist><dict><key>a</key><date>2026-01-02T03:04:05Z</date></dict></plist>' >made/new.plist
echo x >made/other
truncate -s 65M grown.plist
repeat() { yes "$2" | head -n "$1"; }
{ echo '<plist><dict><key>a</key>'; repeat 50 '<array>'; repeat 500000 '<true/>'; repeat 50 '</array>'; echo '</dict></plist>'
} >many.plist
setfattr -n user.note -v new notes
end
mkdir Library/empty Library/kept
echo some >Library/notes; echo x >Library/moved; truncate -s 65M Library/large.plist
echo '<plist><dict/></plist>' >Library/grown.plist
echo '<plist><dict/></plist>' >Library/Preferences/removed.plist; chmod 640 Library/Preferences/removed.plist)sh");
    const ProcessResult result = runHost(
        {"run", "--product=1", "--step=pre", "--root", machine.root(), "--journal", machine.journal(), FAULTY_BUNDLE});
    ASSERT_EQ(result.exitStatus, 7) << "large.plist could not be read before" << result.err;
    const std::size_t begun = result.err.find("| begun\n");
    ASSERT_NE(begun, std::string::npos) << result.err;
    for (const char* sentence : {"it does not hold other files, links, access lists, folders that the run removes",
                                 "modes, owners and times of anything but property lists",
                                 "it does not hold '/Library/large.plist': it is too large"}) {
        EXPECT_LT(result.err.find(sentence), begun) << sentence << " is not said before the first step" << result.err;
    }
    const json report = machine.undo();
    EXPECT_EQ(told(report["restored"]), "file\nkey a\nfile\nattribute\nfolder\nfolder\n");
    const std::string other = "other: the journal does not hold it\n";
    EXPECT_EQ(told(report["left"]),
              "folder: it is not empty\n" + other + other + other + other + other + other + other + other);
    EXPECT_EQ(readFile(machine / "Library/large.plist"), "<plist><dict/></plist>\n");
    EXPECT_EQ(readFile(machine / "Library/Preferences/removed.plist"), "<plist><dict/></plist>\n");
    EXPECT_EQ(static_cast<int>(fs::status(machine / "Library/Preferences/removed.plist").permissions()), 0640);
    EXPECT_TRUE(fs::exists(machine / "Library/made/other"));
}

TEST(Undo, ReportsWhatBefellTheJournalDuringTheRun) {
    const struct {
        const char* meanwhile;  ///< what a shell does while the step waits for the file "go"
        const char* reason;
        const char* journal;
    } cases[] = {
        {R"(mv "$0/../journal" "$0/../moved"; echo other >"$0/../journal"; touch "$0/Library/go")",
         "something else was put in its place", "other\n"},
        {R"(exec 9<"$0/.."; flock 9; touch "$0/Library/go"
until grep -q 'looking at what changed' "$0/../said" || ! kill -0 $!; do sleep 0.02; done; kill $!)",
         "the user ended the wait for another process that has its folder locked", "\"prepared\""},
    };
    for (const auto& c : cases) {
        const Machine machine;
        machine.script(R"sh(printf script >Library/plugin-fault
echo 'touch /Library/ready; until [ -e /Library/go ]; do sleep 0.02; done' >Library/script)sh");
        const std::string begin = R"("$@" 2>"$0/../said" &
until [ -e "$0/Library/ready" ] || ! kill -0 $!; do sleep 0.02; done
)";
        const ProcessResult result = run({"sh", "-c", begin + c.meanwhile + "\nwait $!", machine.root(), HOST_PROGRAM,
                                          "run", "--verbose", "--format=json", "--product=1", "--step=pre", "--root",
                                          machine.root(), "--journal", machine.journal(), FAULTY_BUNDLE});
        EXPECT_EQ(result.exitStatus, 7) << c.reason << readFile(machine.journal("said"));
        const json report = json::parse(result.out);
        EXPECT_EQ(report["steps"][0]["outcome"], "done");
        EXPECT_EQ(report["notStored"][0]["what"], machine.journal());
        EXPECT_EQ(report["notStored"][0]["reason"], c.reason);
        EXPECT_THAT(readFile(machine.journal()), HasSubstr(c.journal));
    }
}

TEST(Undo, RefusesAPlaceForTheJournalThatTheRunCouldChange) {
    const Machine machine;
    machine.script("ln -s nowhere ../link; mkdir ../bound; ln -s root/Library ../inside");
    const std::string before = stateOf(machine.root()), bundle = machine.journal("a.bundle");
    const char* const view = R"(exec bwrap --dev-bind / / --ro-bind /usr /usr --bind "$0/Library" "$0/../bound" "$@")";
    fs::copy(PLUGIN_BUNDLE, bundle, fs::copy_options::recursive);
    const struct {
        std::string journal;
        int exitStatus;
        const char* message;
    } cases[] = {
        {machine / "journal", 2, "lies in '"},
        {machine / "Library/journal", 2, "lies in '"},
        {machine.journal("link"), 6, "exists already"},
        {machine.journal("no/folder"), 6, "has no folder to lie in"},
        {"/proc/journal", 6, "cannot be made"},
        {machine.journal("inside/journal"), 2, "lies in '"},
        {machine.journal("bound/journal"), 2, "lies in '"},
        {bundle + "/Contents/journal", 2, "lies in '"},
        {"/usr/lib/journal", 2, "lies in '"},
        {"/bin/journal", 2, "lies in '"},
    };
    for (const auto& c : cases) {
        const ProcessResult result = run({"sh", "-c", view, machine.root(), HOST_PROGRAM, "run", "--product=5100",
                                          "--root", machine.root(), "--journal", c.journal, bundle});
        EXPECT_EQ(result.exitStatus, c.exitStatus) << c.journal << result.err;
        EXPECT_THAT(result.err, HasSubstr(c.message));
        EXPECT_EQ(stateOf(machine.root()), before);
    }
}

TEST(Undo, WorksOnTheMachineAndOnAFullDisk) {
    const PrivateRoot root;
    const std::string script = R"sh(
set -eu
host=$0 bundle=$1 journal=/var/lib/undo.json
state() { cd /Library; find . -printf '%p %y %m %U %G\n' | sort; find . -type f -exec cksum {} + | sort; cd /; }
mkdir /Library/Preferences
head -c 30000 /dev/zero | tr '\0' x | sed 's|.*|<plist><dict><key>Lang</key><string>&</string></dict></plist>|' \
    >/Library/Preferences/com.corvane.audioplugins.Ambrel.plist
chown 1:2 /Library/Preferences/*.plist || :  # only root may
chmod 4640 /Library/Preferences/*.plist      # a change of the owner takes the first bit away
state >/Applications/before
$host run --machine --product 5100 --journal $journal $bundle >/dev/null
dd if=/dev/zero of=/Library/fill bs=4096 2>/dev/null || true
$host undo --machine $journal >/Applications/full && exit 1
[ $? = 7 ] || exit 2
rm /Library/fill
$host undo --machine $journal >/Applications/undone
state >/Applications/after
cmp /Applications/before /Applications/after
ls -A /var/lib/installer-host)sh";
    const ProcessResult result = run(root.wrap({"sh", "-c", script, HOST_PROGRAM, PLUGIN_BUNDLE},
                                               {"--tmpfs", "/var/lib", "--size", "262144", "--tmpfs", "/Library"}));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(readFile(root / "Applications/full"), HasSubstr("No space left on device"));
    EXPECT_THAT(result.err, HasSubstr("not everything could be put back"));
}

TEST(Undo, WorksForAnOrdinaryUser) {
    const OrdinaryUser user;
    const Machine machine;
    machine.script(": >\"$icon\"");
    user.own(machine.journal(""));
    const std::string before = stateOf(machine.root());
    const ProcessResult installed = user.runHost(
        {"run", "--product=5100", "--root", machine.root(), "--journal", machine.journal(), user.bundle()});
    EXPECT_EQ(installed.exitStatus, 0) << installed.err;
    EXPECT_NE(stateOf(machine.root()), before);
    EXPECT_EQ(user.runHost(machine.undoCommand()).exitStatus, 0);
    EXPECT_EQ(stateOf(machine.root()), before);
}

/// The program with these arguments, to be killed: without a control group, which it could not remove then.
std::vector<std::string> killable(std::vector<std::string> arguments) {
    const std::vector<std::string> sandbox{"bwrap",   "--dev-bind",     "/",  "/",
                                           "--tmpfs", "/sys/fs/cgroup", "--", HOST_PROGRAM};
    arguments.insert(arguments.begin(), sandbox.begin(), sandbox.end());
    return arguments;
}

/// Kills the command before each of its calls that change the disk, undoes, and checks that the root is as it was.
void killAndUndo(const std::string& prepare, bool isUndo) {
    for (int call = 0, goesOn = 1; goesOn != 0; ++call) {
        SCOPED_TRACE(call);
        const Machine machine;
        machine.script(prepare);
        const std::string before = stateOf(machine.root());
        if (isUndo) {
            machine.install();
        }
        const auto command = killable(isUndo ? machine.undoCommand() : machine.installCommand());
        goesOn = runAndKill(command, "installer-host", call) ? 1 : 0;
        ASSERT_TRUE(goesOn != 0 || call >= (isUndo ? 15 : 40)) << "it did not come to its work";
        if (fs::exists(machine.journal())) {
            const json report = machine.undo();
            EXPECT_EQ(report["left"], json::array());
            EXPECT_EQ(machine.undo()["changed"], false);
        }
        ASSERT_EQ(stateOf(machine.root()), before);
    }
}

constexpr const char* OLD_VALUES = R"sh(
: >"$icon"; setfattr -n user.com.apple.FinderInfo -v "0x$(printf %064d 1)" Applications/Corvane
echo '<plist><dict><key>UpdateInterval</key><real>1.5</real><key>Kept</key><data>AA==</data></dict></plist>' \
    >Library/Preferences/com.corvane.updater.plist
chmod 600 Library/Preferences/com.corvane.updater.plist)sh";

TEST(Undo, TakesBackARunThatWasKilledAnywhere) {
    killAndUndo(OLD_VALUES, false);
}

TEST(Undo, TakesBackARunThatMadeAllItsFilesAndWasKilledAnywhere) {
    killAndUndo("rmdir Library/Preferences", false);
}

/// Nobody noted what the killed run left.
TEST(Undo, TakesBackWithAKilledRunWhatWasChangedSince) {
    const Machine machine;
    machine.script(OLD_VALUES);
    const std::string before = stateOf(machine.root());
    ASSERT_TRUE(runAndKill(killable(machine.installCommand()), "installer-host-", 0))
        << "before the worker's first change";
    machine.script("store com.corvane.updater 'p[\"UpdateInterval\"]=3'");
    const ProcessResult would = runHost({"undo", "--dry-run", machine.journal(), "--root", machine.root()});
    EXPECT_THAT(would.out, HasSubstr("whoever"));
    EXPECT_EQ(told(machine.undo()["restored"]), "key UpdateInterval\n");
    EXPECT_EQ(stateOf(machine.root()), before);
}

TEST(Undo, GoesOnWhereItWasKilled) {
    killAndUndo(OLD_VALUES, true);
}

/// What a kill does not show, a power failure would: that a change is on the disk before the next one begins.
TEST(Undo, FlushesEachChangeBeforeTheNext) {
    const std::pair<const char*, const char*> cases[] = {
        {OLD_VALUES, ""},
        {"rmdir Library/Preferences", ""},
        {"true", "chmod 600 Library/Preferences/*"},
        {"true", "chown 1:2 Library/Preferences/* || :  # only root may"}};
    for (const auto& [before, afterARun] : cases) {
        SCOPED_TRACE(before);
        const Machine machine;
        machine.script(before);
        if (*afterARun != '\0') {
            machine.install("earlier");
            machine.script(afterARun);
        }
        for (std::vector<std::string> command : {machine.installCommand(), machine.undoCommand()}) {
            command.insert(command.begin(), HOST_PROGRAM);
            EXPECT_TRUE(flushesEachChange(command, "installer-host")) << command[1];
        }
        EXPECT_EQ(machine.undo()["journalState"], "undone");
    }
}

}  // namespace
