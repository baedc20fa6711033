#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/CFSupport.h"

// On a Mac the locale is the user's setting, and the environment counts for nothing.

namespace {

void setVariable(const char* name, const char* value) {
    if (value != nullptr) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

TEST(CFLocale, TheDecimalSeparatorIsTheUsers) {
    const std::string longName(4000, 'x');
    const struct {
        const char *all, *numeric, *lang;
        const char* expected;
    } cases[] = {
        {nullptr, nullptr, nullptr, "."},
        {"POSIX", nullptr, "de_DE.UTF-8", "."},
        {"C.UTF-8", nullptr, "de_DE.UTF-8", "."},
        {"en_US.UTF-8", nullptr, nullptr, "."},
        {"de_DE.UTF-8", nullptr, nullptr, ","},
        {"de_CH.UTF-8", nullptr, nullptr, "."},
        {"fr_FR.ISO8859-15@euro", nullptr, nullptr, ","},
        {"fa_IR.UTF-8", nullptr, nullptr, "\xD9\xAB"},
        {"bogus", nullptr, "de_DE.UTF-8", "."},
        {longName.c_str(), nullptr, nullptr, "."},
        {"../../etc", nullptr, nullptr, "."},
        {"", "", "de_DE.UTF-8", ","},
        {nullptr, "C", "de_DE.UTF-8", "."},
        {nullptr, "de_DE", "en_US.UTF-8", ","},
    };
    for (const auto& c : cases) {
        setVariable("LC_ALL", c.all);
        setVariable("LC_NUMERIC", c.numeric);
        setVariable("LANG", c.lang);
        const test::Owned<CFLocaleRef> locale(CFLocaleCopyCurrent());
        const auto separator = static_cast<CFStringRef>(CFLocaleGetValue(locale.get(), kCFLocaleDecimalSeparator));
        ASSERT_NE(separator, nullptr);
        EXPECT_EQ(test::text(separator), c.expected) << testing::PrintToString(c.all);
        EXPECT_EQ(CFLocaleGetValue(locale.get(), CFSTR("no such key")), nullptr);
    }
}

}  // namespace
