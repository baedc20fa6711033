#include "CvBase/common/common_char.h"

#include <cctype>

#include "tests/support/Test.h"

namespace {

using namespace test;

TEST(Char, CategoriesAreThoseOfLatin1) {
    // An independent table: Unicode's, as Python has it. The soft hyphen alone is a dash here and a format character
    // there.
    const ProcessResult python =
        run({"python3", "-c",
             "import unicodedata as u\n"
             "names = '-- Mn Mc Me Nd Nl No Zs Zl Zp Cc Cf Cs Co Cn Lu Ll Lt Lm Lo Pc Pd Ps Pe Pi Pf Po Sm Sc Sk "
             "So'.split()\n"
             "early = {0xA7: 'So', 0xAA: 'Ll', 0xAD: 'Pd', 0xB6: 'So', 0xBA: 'Ll'}\n"
             "print(*[names.index(early.get(i, u.category(chr(i)))) for i in range(256)], end='')"});
    ASSERT_EQ(python.exitStatus, 0) << python.err;
    std::string table;
    for (int i = 0; i < 256; ++i) {
        table += (i == 0 ? "" : " ") + std::to_string(_CHAR_CATEGORIES[i]);
    }
    EXPECT_EQ(table, python.out);
}

TEST(Char, PredicatesLookAtTheUnsignedByte) {
    for (int i = 0; i < 256; ++i) {
        const Char c(static_cast<char>(i));
        const bool isAscii = i < 0x80;
        EXPECT_EQ(c.IsWhiteSpace(), (isAscii && std::isspace(i) != 0) || i == 0xA0) << i;
        EXPECT_EQ(c.IsDigit(), isAscii && std::isdigit(i) != 0) << i;
        EXPECT_EQ(c.ToLower(), static_cast<char>(isAscii ? std::tolower(i) : i)) << i;
        EXPECT_EQ(c.ToUpper(), static_cast<char>(isAscii ? std::toupper(i) : i)) << i;
    }
}

}  // namespace
