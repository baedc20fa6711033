#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "tests/support/CFSupport.h"

namespace {

// On a Mac the locale is the user's setting, and the environment counts for nothing.
TEST(CFLocale, TheDecimalSeparatorIsThatOfTheNamedLocale) {
    setenv("LC_ALL", "", 1);
    unsetenv("LC_NUMERIC");
    const std::pair<std::string, const char*> cases[] = {
        {"POSIX", "."},
        {"fr_FR.ISO8859-15@euro", ","},
        {"de_CH.UTF-8", "."},
        {"fr_CA", ","},
        {"en_ZA", ","},
        {"pt_AO", ","},
        {"uz_AF", "\xD9\xAB"},
        {"ar_EG@numbers=latn", "."},
        {"../../etc", "."},
        {"fa_IR.UTF-8", "\xD9\xAB"},
        {std::string(4000, 'x'), "."},
    };
    for (const auto& [name, expected] : cases) {
        setenv("LANG", name.c_str(), 1);
        const cv::CFReference<CFLocaleRef> locale(CFLocaleCopyCurrent());
        const auto separator = static_cast<CFStringRef>(CFLocaleGetValue(locale.get(), kCFLocaleDecimalSeparator));
        ASSERT_NE(separator, nullptr);
        EXPECT_EQ(test::text(separator), expected) << name;
    }
}

}  // namespace
