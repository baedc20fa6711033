#include <sys/stat.h>
#include <unistd.h>

#include "platform/StoreFailures.h"
#include "tests/platform/PreferencesSupport.h"
#include "tests/support/PrivateRoot.h"

namespace test {

namespace {

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

TEST_F(UserPreferences, ValuesAreKeptExactlyAndOthersLeftAlone) {
    const std::string others =
        "'one': 1, 'yes': True, 'real': 1e-300, 'list': [1, [], {}, 'x', True], 'bytes': b'\\x00\\xff'";
    for (const std::string format : {"BINARY", "XML"}) {
        writeWithPython("{'Lang': [1, 2], " + others + "}", format);
        setText("Lang", "fr");
        set("least", number(INT64_MIN).get());
        set("tenth", number(0.1).get());
        ASSERT_TRUE(synchronize()) << format;
        EXPECT_EQ(python("repr(p) == repr(dict(sorted({'Lang': 'fr', 'least': -2**63, 'tenth': 0.1, " + others +
                             "}.items())))",
                         file()),
                  "True")
            << format;
        std::int64_t least = 0;
        EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(copy("least").get()), kCFNumberSInt64Type, &least));
        EXPECT_EQ(least, INT64_MIN);
    }
    for (const std::u16string& text : {u""s, u"\uFEFFe\u0301\u00e9\U0001F600\n\r\t\x01 a\0b"s}) {
        set("Text", makeString(text).get());
        ASSERT_TRUE(synchronize());
        EXPECT_EQ(units(static_cast<CFStringRef>(copy("Text").get())), text);
    }
}

TEST_F(UserPreferences, ValuesOfAFileAreObjectsOfTheirTypes) {
    writeWithPython("{'yes': True, 'one': 1, 'most': 2**64-1, 'half': 0.5, 'list': [], 'dict': {'a': 1}}", "BINARY");
    EXPECT_EQ(copy("yes").get(), kCFBooleanTrue);
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    const CFTypeID NUMBER = CFNumberGetTypeID();
    for (const auto& [key, type] : {std::pair{"yes", CFBooleanGetTypeID()},
                                    {"one", NUMBER},
                                    {"most", NUMBER},
                                    {"half", NUMBER},
                                    {"list", CFArrayGetTypeID()},
                                    {"dict", CFDictionaryGetTypeID()}}) {
        const auto value = copy(key);
        ASSERT_TRUE(value) << key;
        EXPECT_EQ(CFGetTypeID(value.get()), type) << key;
        EXPECT_TRUE(CFEqual(value.get(), copy(key).get())) << key;
        EXPECT_TRUE(type != NUMBER || CFNumberGetType(static_cast<CFNumberRef>(value.get())) ==
                                          (key == "half"s ? kCFNumberFloat64Type : kCFNumberSInt64Type))
            << key;
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
    EXPECT_FALSE(fs::exists(file())) << "nothing is written before";
    EXPECT_EQ(copyText("Remove"), "c") << "a reader sees the collected change";
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(readFile(file()).substr(0, 8), "bplist00");
    set("Remove", nullptr);
    EXPECT_EQ(copyText("Remove"), "(none)");
    ASSERT_TRUE(synchronize());
    EXPECT_EQ(python("p", file()), "{'Keep': 'b'}");
    fs::remove(file());
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file())) << "what was stored is collected no longer";
}

TEST_F(UserPreferences, WhatCannotBeStoredIsRefusedWithOneLine) {
    std::string nested = "<string/>";
    for (int level = 0; level < 511; ++level) {
        nested = "<array>" + nested + "</array>";
    }
    const TempDir bundles;
    writeFile(bundles / "Contents/Info.plist", "<plist><dict><key>a</key>" + nested + "</dict></plist>");
    const CFReference bundle(CFBundleCreate(nullptr, url(bundles.path()).get()));
    ASSERT_TRUE(bundle);
    const auto identifier = uuid("5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8");
    const auto half = makeString(u"a\xD800");
    for (const CFTypeRef value :
         {CFTypeRef(identifier.get()), CFTypeRef(half.get()), CFTypeRef(CFBundleGetInfoDictionary(bundle.get()))}) {
        const std::string errors = errorsOf([&] { set("Bad", value); });
        EXPECT_THAT(errors, HasSubstr("key \"Bad\": the value is refused"));
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
        const auto failures = cv::storeFailures();
        ASSERT_EQ(failures.size(), 1U);
        EXPECT_THAT(failures.front().what, HasSubstr("key \"Bad\""));
    }
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UserPreferences, KeysDomainsAndScopesThatNameNothingAreRefused) {
    const auto nul = makeString({u"a\0b", 3}), half = makeString(u"a\xD800");
    const CFStringRef USER = kCFPreferencesCurrentUser, ANY = kCFPreferencesAnyHost;
    // clang-format off
    const struct { CFStringRef key, domain, user, host; int lines; /* of the three calls */ } rows[] = {
        {half.get(), CFSTR("x"), USER, ANY, 1}, {nullptr, CFSTR("x"), USER, ANY, 1},
        {CFSTR("k"), CFSTR(""), USER, ANY, 3}, {CFSTR("k"), CFSTR("../x"), USER, ANY, 3},
        {CFSTR("k"), nul.get(), USER, ANY, 3}, {CFSTR("k"), nullptr, USER, ANY, 3},
        {CFSTR("k"), CFSTR("x"), kCFPreferencesAnyUser, ANY, 3},
        {CFSTR("k"), CFSTR("x"), CFSTR("somebody"), ANY, 3}, {CFSTR("k"), CFSTR("x"), USER, nullptr, 3},
    };
    // clang-format on
    for (const auto& row : rows) {
        const std::string errors = errorsOf([&row] {
            CFPreferencesSetValue(row.key, CFSTR("v"), row.domain, row.user, row.host);
            EXPECT_EQ(CFPreferencesSynchronize(row.domain, row.user, row.host), row.lines == 1) << "nothing to store";
            EXPECT_EQ(CFPreferencesCopyValue(row.key, row.domain, row.user, row.host), nullptr);
        });
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), row.lines) << "row " << &row - rows << errors;
        EXPECT_THAT(cv::storeFailures().back().reason, StartsWith(row.lines == 1 ? "a key" : "its domain"));
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
