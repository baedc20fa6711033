#include "CvBase/common/string/common_string_finder.h"

#include "CvBase/common/string/common_string_two_way.h"
#include "tests/support/Text.h"

namespace {

using namespace test;
using StringDetail::Finder;
using StringDetail::findTwoWay;

/// The text of `length` letters a and b that `number` is in binary.
std::string letters(unsigned int number, unsigned int length) {
    std::string text;
    for (; length > 0; --length, number /= 2) {
        text += number % 2 == 0 ? 'a' : 'b';
    }
    return text;
}

TEST(TwoWay, FindsEveryShortPatternOfTwoLetters) {
    for (unsigned int length = 1; length <= 8; ++length) {
        for (unsigned int i = 0; i < 1U << length; ++i) {
            const std::string pattern = letters(i, length);
            for (unsigned int j = 0; j < 1U << 12; ++j) {
                const std::string text = letters(j, 12);
                ASSERT_EQ(findTwoWay(text, pattern), text.find(pattern)) << pattern << " in " << text;
            }
        }
    }
}

/// Every place of the pattern, overlapping ones too, as the finder and std::string see them.
void expectPlaces(const std::string& text, const std::string& pattern) {
    Finder finder(text, pattern);
    for (std::size_t start = 0, wanted = 0; wanted != std::string::npos; start = wanted + 1) {
        wanted = text.find(pattern, start);
        ASSERT_EQ(finder.find(start), wanted)
            << PrintToString(pattern) << " from " << start << " in " << PrintToString(text);
    }
}

// Few different bytes make many places that are nearly the pattern, many make few; both make blocks of every length.
TEST(Finder, FindsEveryPlace) {
    std::mt19937 random(19910701);
    for (std::size_t length = 0; length < 1500; ++length) {
        const unsigned int different = length % 3 == 0 ? 2 : length % 3 == 1 ? 5 : 256;
        std::string text(length, '\0');
        for (char& c : text) {
            c = static_cast<char>(random() % different);
        }
        const std::size_t begin = random() % (length + 1);
        const std::string piece = text.substr(begin, random() % (length % 7 == 0 ? 200 : 9));
        expectPlaces(text, piece);
        expectPlaces(text, piece + '\x01');
        expectPlaces(piece + text + piece + text, piece + '\x01' + piece);
        expectPlaces(piece, text);
    }
}

TEST(Finder, TakesLinearTime) {
    const std::string half(2000000, 'a');
    const std::string nearly = half.substr(1) + "b";
    for (const std::string& text : {half + half + half + half, nearly + nearly + nearly + nearly}) {
        for (const std::string& pattern : {"b" + half + half, half + "b" + half, half + half + "b"}) {
            EXPECT_TRUE(holdsInACopy([&] { return Finder(text, pattern).find(0) == std::string::npos; }))
                << "hours otherwise";
        }
    }
}

}  // namespace
