// The user's decimal separator is read once, at the start of the process: each case is a process of its own.

#include "tests/support/Test.h"

namespace {

using namespace test;
using Environment = std::vector<std::pair<std::string, std::string>>;

std::string probe(Environment environment, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), NUMBER_PROBE);
    ProcessOptions options;
    options.unset = {"LC_ALL", "LC_NUMERIC", "LANG", "LANGUAGE"};
    options.set = std::move(environment);
    const ProcessResult result = run(arguments, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
}

TEST(DecimalSeparator, IsTheUsers) {
    // clang-format off
    const struct { Environment environment; const char* number; } rows[] = {
        {{}, "1234.50"}, {{{"LC_ALL", "en_US.UTF-8"}}, "1234.50"}, {{{"LC_ALL", "bogus"}}, "1234.50"},
        {{{"LC_ALL", "de_DE.UTF-8"}}, "1234,50"}, {{{"LANG", "de_DE"}}, "1234,50"}, {{{"LC_NUMERIC", "fr_FR.UTF-8"}, {"LANG", "C"}}, "1234,50"},
        {{{"LC_ALL", "C"}, {"LANG", "de_DE.UTF-8"}}, "1234.50"},
        {{{"LC_ALL", "fa_IR.UTF-8"}}, "1234.50"},  // U+066B, which is not ASCII
    };
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(probe(row.environment, {}), row.number + std::string("\n")) << PrintToString(row.environment);
    }
}

TEST(DecimalSeparator, IsReadBackBesideThePointAndTheComma) {
    for (const char* locale : {"C", "de_DE.UTF-8"}) {
        const std::string out =
            probe({{"LC_ALL", locale}}, {"1.5", "1,5", " 1,5 ", "12", " 12", "1.5.5", "\xE9", "  "});
        EXPECT_EQ(out.substr(out.find('\n')),
                  "\n1500 failed\n1500 failed\n1500 failed\n12000 12\n12000 12\nfailed failed\n0 failed\n0 failed\n");
    }
}

// The C library, too, has a locale here, whose decimal separator is of one category made for the test.
TEST(DecimalSeparator, IsReadAndWrittenBesideThatOfTheSystem) {
    const std::string comma = "50\n1500 failed\n1500 failed\n12000 12\n1500 failed\n";
    // clang-format off
    const struct { std::string locale, separator, expected; } rows[] = {
        {"de_DE.UTF-8", "<U002C>", "1234," + comma}, {"en_US.UTF-8", "<U002C>", "1234." + comma},
        // Only the first byte of D9 AB takes the point's place, which leaves no UTF-8: a 0 that succeeds.
        {"ps_AF.UTF-8", "<U066B>", "1234\xD9\xAB" "50\n0 failed\n0 failed\n12000 12\nfailed failed\n"},
    };
    // clang-format on
    for (const auto& row : rows) {
        const TempDir folder;
        writeFile(folder / "source", "escape_char /\nLC_NUMERIC\ndecimal_point \"" + row.separator +
                                         "\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
        const ProcessResult made =
            run({"localedef", "--force", "-f", "UTF-8", "-i", folder / "source", folder / row.locale});
        EXPECT_EQ(made.exitStatus, 1) << made.err;  // with warnings: it has this one category
        // setlocale itself loses the few bytes that it copies of LOCPATH.
        EXPECT_EQ(probe({{"LC_ALL", row.locale}, {"LOCPATH", folder.path()}, {"ASAN_OPTIONS", "detect_leaks=0"}},
                        {"--setlocale", "1.5", "1,5", "12", "1\xEF\xBC\x8E\x35"}),
                  row.expected);
    }
}

}  // namespace
