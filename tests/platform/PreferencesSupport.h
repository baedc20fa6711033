#pragma once

// What the tests of preferences share.

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/CFSupport.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace test {

namespace fs = std::filesystem;

/// The domain that the tests write.
constexpr const char* DOMAIN_NAME = "com.corvane.test";

/// What `expression` is in Python, with `p` the dictionary that the property list file holds.
inline std::string python(const std::string& expression, const std::string& file) {
    const std::string script =
        "import plistlib,sys,datetime\np=plistlib.load(open(sys.argv[1],'rb'))\nprint(" + expression + ")";
    const ProcessResult result = run({"python3", "-c", script, file});
    return result.exitStatus == 0 ? result.out.substr(0, result.out.size() - 1) : result.err;
}

/// The names in the folder, sorted.
inline std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The current user's preferences on any host, in a home folder of the test's own.
class UserPreferences : public ::testing::Test {
protected:
    UserPreferences() { setenv("HOME", home_.path().c_str(), 1); }

    std::string folder() const { return home_ / "Library/Preferences"; }
    std::string file() const { return folder() + "/" + DOMAIN_NAME + ".plist"; }

    static void set(const std::string& key, CFPropertyListRef value) {
        CFPreferencesSetValue(string(key).get(), value, CFSTR("com.corvane.test"), kCFPreferencesCurrentUser,
                              kCFPreferencesAnyHost);
    }
    static void setText(const std::string& key, const std::string& value) { set(key, string(value).get()); }
    static bool synchronize() {
        return CFPreferencesSynchronize(CFSTR("com.corvane.test"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    }
    static cv::CFReference<CFPropertyListRef> copy(const std::string& key) {
        return cv::CFReference(CFPreferencesCopyValue(string(key).get(), CFSTR("com.corvane.test"), kCFPreferencesCurrentUser,
                                            kCFPreferencesAnyHost));
    }
    static std::string copyText(const std::string& key) {
        const auto value = copy(key);
        return value ? text(static_cast<CFStringRef>(value.get())) : "(none)";
    }

    /// Writes the preference file with Python: `entries` is an expression for a dictionary, `format` BINARY or XML.
    void writeWithPython(const std::string& entries, const std::string& format) const {
        fs::create_directories(folder());
        const std::string script = "import plistlib,sys,datetime\nplistlib.dump(" + entries +
                                   ",open(sys.argv[1],'wb'),fmt=plistlib.FMT_" + format + ")";
        const ProcessResult result = run({"python3", "-c", script, file()});
        ASSERT_EQ(result.exitStatus, 0) << result.err;
    }

    TempDir home_;
};

}  // namespace test
