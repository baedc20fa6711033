#pragma once

// What the tests of preferences share.

#include <CoreFoundation/CoreFoundation.h>

#include "tests/support/CFSupport.h"
#include "tests/support/PreferenceFiles.h"
#include "tests/support/Test.h"

namespace test {

/// The domain that the tests write.
constexpr const char* DOMAIN_NAME = "com.corvane.test";

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
        return cv::CFReference(CFPreferencesCopyValue(string(key).get(), CFSTR("com.corvane.test"),
                                                      kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    }
    static std::string copyText(const std::string& key) {
        const auto value = copy(key);
        return value ? text(static_cast<CFStringRef>(value.get())) : "(none)";
    }

    /// Writes the preference file with Python: `entries` is an expression for a dictionary, `format` BINARY or XML.
    void writeWithPython(const std::string& entries, const std::string& format) const {
        test::writeWithPython(file(), entries, format);
    }

    TempDir home_;
};

}  // namespace test
