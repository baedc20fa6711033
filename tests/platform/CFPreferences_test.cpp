#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/PreferencesSupport.h"
#include "tests/support/PrivateRoot.h"
#include "tests/support/StandardError.h"

namespace test {

namespace {

using namespace std::string_literals;
using testing::HasSubstr;

TEST_F(UserPreferences, NothingIsWrittenBeforeSynchronize) {
    setText("Lang", "fr");
    EXPECT_FALSE(fs::exists(home_ / "Library"));
    EXPECT_EQ(copyText("Lang"), "fr") << "a reader sees the collected change";
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'Lang': 'fr'}");
    EXPECT_EQ(readFile(file()).substr(0, 8), "bplist00");
    EXPECT_EQ(namesIn(folder()), (std::vector<std::string>{"com.corvane.test.plist"}));
}

TEST_F(UserPreferences, FilesAreTheHomesOwnersAndOpenToEveryReaderWhateverTheUmask) {
    const uid_t user = geteuid() == 0 ? 65534 : geteuid();
    ASSERT_EQ(chown(home_.path().c_str(), user, getegid()), 0);
    const mode_t before = umask(0077);
    setText("Lang", "fr");
    EXPECT_TRUE(synchronize());
    umask(before);
    for (const auto& [path, mode] : {std::pair{file(), 0644U}, {folder(), 0755U}, {home_ / "Library", 0755U}}) {
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0) << path;
        EXPECT_EQ(status.st_mode & 07777U, mode) << path;
        EXPECT_EQ(status.st_uid, user) << path;
    }
}

TEST_F(UserPreferences, NumbersKeepTheirValueAndType) {
    const std::int64_t least = INT64_MIN;
    const double real = 0.1;
    set("least", cv::CFReference(CFNumberCreate(nullptr, kCFNumberSInt64Type, &least)).get());
    set("real", cv::CFReference(CFNumberCreate(nullptr, kCFNumberFloat64Type, &real)).get());
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'least': -9223372036854775808, 'real': 0.1}");
    const auto copied = copy("least");
    std::int64_t value = 0;
    EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(copied.get()), kCFNumberSInt64Type, &value));
    EXPECT_EQ(value, least);
}

TEST_F(UserPreferences, TextIsKeptExactly) {
    for (const std::u16string& text :
         {u""s, u"\uFEFFmark"s, u"e\u0301\u00e9"s, u"\U0001F600"s, u"line\nline\r\t\x01"s, u"a\0b"s}) {
        set("Text", makeString(text).get());
        ASSERT_TRUE(synchronize());
        const auto copied = copy("Text");
        EXPECT_EQ(units(static_cast<CFStringRef>(copied.get())), text);
    }
}

TEST_F(UserPreferences, ValuesOfAFileAreObjectsOfTheirTypes) {
    writeWithPython("{'yes': True, 'one': 1, 'most': 2**64-1, 'half': 0.5, 'list': [], 'dict': {'a': 1}}", "BINARY");
    EXPECT_EQ(copy("yes").get(), kCFBooleanTrue);
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    const struct {
        const char* key;
        CFTypeID type;
        CFNumberType numberType;
    } cases[] = {
        {"yes", CFBooleanGetTypeID(), 0},
        {"one", CFNumberGetTypeID(), kCFNumberSInt64Type},
        {"most", CFNumberGetTypeID(), kCFNumberSInt64Type},
        {"half", CFNumberGetTypeID(), kCFNumberFloat64Type},
        {"list", CFArrayGetTypeID(), 0},
        {"dict", CFDictionaryGetTypeID(), 0},
    };
    for (const auto& c : cases) {
        const auto value = copy(c.key);
        ASSERT_TRUE(value) << c.key;
        EXPECT_EQ(CFGetTypeID(value.get()), c.type) << c.key;
        if (c.numberType != 0) {
            EXPECT_EQ(CFNumberGetType(static_cast<CFNumberRef>(value.get())), c.numberType) << c.key;
        }
        EXPECT_TRUE(CFEqual(value.get(), copy(c.key).get())) << c.key;
    }
}

TEST_F(UserPreferences, OtherKeysKeepTheirValuesAndTypes) {
    const std::string entries =
        "'n': -1, 'least': -2**63, 'most': 2**63-1, 'above': 2**63, 'big': 2**64-5, 'byte': 200, 'real': 1e-300, "
        "'whole': 1.0, 'yes': True, 'one': 1,"
        "'text': 'é\\U0001f600', 'none': '', 'bytes': b'\\x00\\xff', 'nothing': b'', 'list': [1, [], {}, 'x', True],"
        "'old': datetime.datetime(1900, 1, 2, 3, 4, 5, 250000), 'far': datetime.datetime(2500, 1, 1), 'dict': {'a': "
        "{'b': 1}},"
        "'Lang': [1, 2]";
    const std::string list = "sorted((k, type(v), repr(v)) for k, v in p.items() if k != 'Lang')";
    for (const std::string format : {"BINARY", "XML"}) {
        writeWithPython("{" + entries + (format == "BINARY" ? ", 'uid': plistlib.UID(70000)}" : "}"), format);
        const std::string before = python(list, file());
        EXPECT_THAT(before, HasSubstr("18446744073709551611"));
        setText("Lang", "fr");
        ASSERT_TRUE(synchronize()) << format;
        EXPECT_EQ(python(list, file()), before) << format;
        EXPECT_EQ(python("p['Lang']", file()), "fr") << "a value of another type is replaced";
    }
}

TEST_F(UserPreferences, TheLastCollectedValueIsStoredAndNullRemovesTheKey) {
    set("Never", nullptr);
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file())) << "nothing to remove it from";
    set("Keep", nullptr);
    setText("Keep", "a");
    setText("Keep", "b");
    setText("Remove", "c");
    ASSERT_TRUE(synchronize());
    set("Remove", nullptr);
    EXPECT_EQ(copyText("Remove"), "(none)");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'Keep': 'b'}");
    fs::remove(file());
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file())) << "what was stored is collected no longer";
}

TEST_F(UserPreferences, WhatCannotBeStoredIsRefusedWithOneLine) {
    const cv::CFReference uuid(CFUUIDCreateFromString(nullptr, CFSTR("5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8")));
    const auto half = makeString(u"a\xD800");
    const TempDir bundles;
    std::string nested = "<string/>";
    for (int level = 0; level < 511; ++level) {
        nested = "<array>" + nested + "</array>";
    }
    writeFile(bundles / "X.bundle/Contents/Info.plist", "<plist><dict><key>a</key>" + nested + "</dict></plist>");
    const auto path = string(bundles / "X.bundle");
    const cv::CFReference url(CFURLCreateWithFileSystemPath(nullptr, path.get(), kCFURLPOSIXPathStyle, true));
    const cv::CFReference bundle(CFBundleCreate(nullptr, url.get()));
    ASSERT_TRUE(bundle);
    const CFTypeRef deep = CFBundleGetInfoDictionary(bundle.get());
    for (const CFTypeRef value : {CFTypeRef(uuid.get()), CFTypeRef(half.get()), deep}) {
        const std::string errors = errorsOf([&] { set("Bad", value); });
        EXPECT_THAT(errors, HasSubstr("\"Bad\" is refused"));
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UserPreferences, KeysDomainsAndScopesThatNameNothingAreRefused) {
    const auto nul = makeString({u"a\0b", 3});
    const auto half = makeString(u"a\xD800");
    const struct {
        CFStringRef key, domain, user, host;
        int lines;  ///< of the three calls
    } cases[] = {
        {half.get(), CFSTR("x"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost, 1},
        {nullptr, CFSTR("x"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost, 1},
        {CFSTR("k"), CFSTR(""), kCFPreferencesCurrentUser, kCFPreferencesAnyHost, 3},
        {CFSTR("k"), CFSTR("../x"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost, 3},
        {CFSTR("k"), nul.get(), kCFPreferencesCurrentUser, kCFPreferencesAnyHost, 3},
        {CFSTR("k"), nullptr, kCFPreferencesCurrentUser, kCFPreferencesAnyHost, 3},
        {CFSTR("k"), CFSTR("x"), kCFPreferencesAnyUser, kCFPreferencesAnyHost, 3},
        {CFSTR("k"), CFSTR("x"), CFSTR("somebody"), kCFPreferencesAnyHost, 3},
        {CFSTR("k"), CFSTR("x"), kCFPreferencesCurrentUser, nullptr, 3},
    };
    for (const auto& c : cases) {
        const std::string errors = errorsOf([&c] {
            CFPreferencesSetValue(c.key, CFSTR("v"), c.domain, c.user, c.host);
            EXPECT_EQ(CFPreferencesSynchronize(c.domain, c.user, c.host), c.lines == 1) << "nothing is to be stored";
            EXPECT_EQ(CFPreferencesCopyValue(c.key, c.domain, c.user, c.host), nullptr);
        });
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), c.lines) << errors;
    }
    EXPECT_FALSE(fs::exists(home_ / "Library"));
}

/// What the driver prints that stores one preference in a root whose /etc has but the file `name` with this text;
/// `home` are bubblewrap's arguments for HOME.
ProcessResult storeWithEtc(PrivateRoot& root, const char* scope, const std::string& name, const std::string& text,
                           const std::vector<std::string>& home) {
    writeFile(root / name, text);
    std::vector<std::string> arguments{"--tmpfs", "/etc", "--ro-bind", root / name, "/etc/" + name};
    arguments.insert(arguments.end(), home.begin(), home.end());
    return run(root.wrap({PREFERENCES_DRIVER, scope, DOMAIN_NAME, "set", "Lang", "fr", "sync"}, arguments));
}

TEST(HomeFolder, ComesFromTheUserDatabaseWithoutAHomeVariable) {
    PrivateRoot root;
    const std::string user = "somebody:x:" + std::to_string(getuid()) + ":0::/Library/home:/bin/sh\n";
    EXPECT_EQ(storeWithEtc(root, "user", "passwd", user, {"--unsetenv", "HOME"}).out, "1\n");
    EXPECT_EQ(python("p", root / "Library/home/Library/Preferences/com.corvane.test.plist"), "{'Lang': 'fr'}");
    EXPECT_THAT(storeWithEtc(root, "user", "passwd", "", {"--setenv", "HOME", "relative"}).err,
                HasSubstr("the current user has no home folder"));
}

TEST(ByHost, FilesCarryTheMachinesIdentifier) {
    PrivateRoot root;
    const std::vector<std::string> home{"--setenv", "HOME", "/Library"};
    EXPECT_EQ(storeWithEtc(root, "host", "machine-id", "00112233445566778899aabbccddeeff\n", home).out, "1\n");
    EXPECT_EQ(python("p", root / ("Library/Library/Preferences/ByHost/com.corvane.test."
                                  "00112233-4455-6677-8899-AABBCCDDEEFF.plist")),
              "{'Lang': 'fr'}");
    EXPECT_THAT(storeWithEtc(root, "host", "machine-id", "short", home).err, HasSubstr("has no identifier"));
}

}  // namespace

}  // namespace test
