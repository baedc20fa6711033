#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/CFSupport.h"
#include "tests/support/Process.h"

// On a Mac the locale is the user's setting, and the environment counts for nothing.

namespace {

using Variables = std::vector<std::pair<std::string, std::string>>;

test::ProcessResult separatorFor(const Variables& variables, const std::vector<std::string>& wrapper = {}) {
    std::vector<std::string> command = wrapper;
    command.emplace_back(PRINT_DECIMAL_SEPARATOR);
    test::ProcessOptions options;
    options.unset = {"LC_ALL", "LC_NUMERIC", "LANG"};
    options.set = variables;
    return test::run(command, options);
}

TEST(CFLocale, TheDecimalSeparatorIsTheUsersWhileStaticObjectsAreMade) {
    const struct {
        Variables variables;
        const char* expected;
    } cases[] = {
        {{}, "."},
        {{{"LC_ALL", "C"}}, "."},
        {{{"LC_ALL", "POSIX"}, {"LANG", "de_DE.UTF-8"}}, "."},
        {{{"LC_ALL", "C.UTF-8"}, {"LANG", "de_DE.UTF-8"}}, "."},
        {{{"LC_ALL", "en_US.UTF-8"}}, "."},
        {{{"LC_ALL", "de_DE.UTF-8"}}, ","},
        {{{"LC_ALL", "de_CH.UTF-8"}}, "."},
        {{{"LC_ALL", "fr_FR.ISO8859-15@euro"}}, ","},
        {{{"LC_ALL", "fa_IR.UTF-8"}}, "\xD9\xAB"},
        {{{"LC_ALL", "bogus"}, {"LANG", "de_DE.UTF-8"}}, "."},
        {{{"LC_ALL", std::string(4000, 'x')}}, "."},
        {{{"LC_ALL", "../../etc"}}, "."},
        {{{"LC_ALL", ""}, {"LC_NUMERIC", ""}, {"LANG", "de_DE.UTF-8"}}, ","},
        {{{"LC_NUMERIC", "C"}, {"LANG", "de_DE.UTF-8"}}, "."},
        {{{"LC_NUMERIC", "de_DE"}, {"LANG", "en_US.UTF-8"}}, ","},
    };
    for (const auto& c : cases) {
        const test::ProcessResult result = separatorFor(c.variables);
        EXPECT_EQ(result.out, std::string(c.expected) + "\n") << testing::PrintToString(c.variables);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
    }
}

TEST(CFLocale, NeedsNoUserDatabase) {
    const test::ProcessResult result = separatorFor(
        {{"LC_ALL", "de_DE.UTF-8"}}, {"bwrap", "--ro-bind", "/", "/", "--tmpfs", "/etc", "--unsetenv", "HOME", "--"});
    EXPECT_EQ(result.out, ",\n");
    EXPECT_EQ(result.exitStatus, 0) << result.err;
}

TEST(CFLocale, AnUnknownKeyHasNoValue) {
    const test::Owned<CFLocaleRef> locale(CFLocaleCopyCurrent());
    EXPECT_EQ(CFLocaleGetValue(locale.get(), CFSTR("no such key")), nullptr);
    EXPECT_NE(CFLocaleGetValue(locale.get(), kCFLocaleDecimalSeparator), nullptr);
}

}  // namespace
