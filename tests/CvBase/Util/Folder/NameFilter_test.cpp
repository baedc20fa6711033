#include "CvBase/Util/Folder/NameFilter.h"

#include "tests/support/Test.h"

namespace {

TEST(NameFilter, TheFirstStarStandsForAnythingAndCaseForNothing) {
    // clang-format off
    const struct { const char* filter; const char* name; bool matches; } rows[] = {
        {"", "any", true},
        {"*", ".hidden", true},
        {"ab", "ABC", true},
        {"ab", "xab", false},
        {"ab", "a", false},
        {"*.TXT", ".txt", true},
        {"*.txt", "a.txt ", false},
        {"a*z", "A middle Z", true},
        {"a*z", "za", false},
        {"ab*ab", "ab", true},
        {"ab*ba", "aba", true},
        {"a**", "a*", true},
        {"a**", "ab", false},
        {"?", "a", false},
        {"[", "{", false},
        {"\xC3\xA9*", "\xC3\x89", false},
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(Util::NameFilter(row.filter).matches(row.name, std::strlen(row.name)), row.matches)
            << '"' << row.filter << "\" on \"" << row.name << '"';
    }
    EXPECT_FALSE(Util::NameFilter("*abc").matches(&"abc"[2], 1)) << "what lies before a name is none of it";
}

}  // namespace
