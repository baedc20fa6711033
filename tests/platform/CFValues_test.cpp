// Numbers, identifiers, file URLs, dates and locales.

#include <chrono>

#include "tests/support/CFSupport.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

template <typename T>
using Limits = std::numeric_limits<T>;

constexpr SInt64 TWO_TO_53 = SInt64{1} << 53;
constexpr double TWO_TO_63 = 9223372036854775808.0;

TEST(CFNumber, TakesAndGivesAValueAtAnyAddress) {
    alignas(8) char memory[] = "\0\x2A\0\0\0\0\0\0";
    const CFReference<CFNumberRef> made(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, memory + 1));
    EXPECT_TRUE(CFNumberGetValue(made.get(), kCFNumberSInt32Type, memory + 3));
    EXPECT_EQ(memory[3], 42);
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, 77, memory), nullptr) << "another type";
    EXPECT_EQ(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, nullptr), nullptr);
}

TEST(CFNumber, SaysWhenAValueLosesSomething) {
    // clang-format off
    const struct { CFReference<CFNumberRef> number; bool fits32; SInt32 as32; bool fits64; SInt64 as64; } rows[] = {
        {number(SInt64{Limits<SInt32>::min()}), true, Limits<SInt32>::min(), true, Limits<SInt32>::min()},
        {number(SInt64{1} << 31), false, Limits<SInt32>::min(), true, SInt64{1} << 31},
        {number(Limits<SInt64>::max()), false, -1, true, Limits<SInt64>::max()},
        {number(-2.5), false, -2, false, -2}, {number(double{NAN}), false, 0, false, 0},
        {number(1e300), false, -1, false, Limits<SInt64>::max()},
        {number(TWO_TO_63), false, -1, false, Limits<SInt64>::max()},
        {number(-TWO_TO_63), false, 0, true, Limits<SInt64>::min()},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        SInt32 as32 = 99;
        SInt64 as64 = 99;
        EXPECT_EQ(CFNumberGetValue(row.number.get(), kCFNumberSInt32Type, &as32), row.fits32);
        EXPECT_EQ(CFNumberGetValue(row.number.get(), kCFNumberSInt64Type, &as64), row.fits64);
        EXPECT_EQ(as32, row.as32);
        EXPECT_EQ(as64, row.as64);
    }
    double stored = 0;
    EXPECT_TRUE(CFNumberGetValue(number(TWO_TO_53).get(), kCFNumberFloat64Type, &stored));
    EXPECT_FALSE(CFNumberGetValue(number(Limits<SInt64>::max()).get(), kCFNumberFloat64Type, &stored));
    EXPECT_EQ(stored, TWO_TO_63);
}

TEST(CFNumber, EqualsAnotherOfExactlyItsValue) {
    // clang-format off
    const struct { CFReference<CFNumberRef> a, b; bool areEqual; } rows[] = {
        {number(SInt64{5}), number(5.0), true}, {number(SInt64{-1}), number(-1.0), true}, {number(SInt64{0}), number(-0.0), true},
        {number(TWO_TO_53 + 1), number(9007199254740992.0), false},
        {number(INT64_MAX), number(TWO_TO_63), false}, {number(INT64_MIN), number(-TWO_TO_63), true},
        {number(SInt64{-2048}), number(18446744073709549568.0), false},
        {number(double{NAN}), number(double{NAN}), true}, {number(double{INFINITY}), number(-double{INFINITY}), false},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(CFEqual(row.a.get(), row.b.get()), row.areEqual);
        EXPECT_EQ(CFEqual(row.b.get(), row.a.get()), row.areEqual);
        EXPECT_TRUE(!row.areEqual || CFHash(row.a.get()) == CFHash(row.b.get()));
    }
    EXPECT_FALSE(CFEqual(number(SInt64{1}).get(), kCFBooleanTrue));
}

constexpr CFUUIDBytes BYTES = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x11, 0xEF,
                               0x80, 0x00, 0xAB, 0xCD, 0xEF, 0x01, 0x23, 0x45};
constexpr char TEXT[] = "5CD9484B-4A86-11EF-8000-ABCDEF012345";

TEST(CFUUID, BytesAndTextAreTheSameIdentifier) {
    const CFReference<CFUUIDRef> fromBytes(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, BYTES));
    const CFReference<CFStringRef> text(CFUUIDCreateString(kCFAllocatorDefault, fromBytes.get()));
    EXPECT_EQ(test::text(text.get()), TEXT);
    for (const char* spelling : {TEXT, "5cd9484b-4a86-11ef-8000-abcdef012345"}) {
        const auto fromText = uuid(spelling);
        ASSERT_TRUE(fromText) << spelling;
        EXPECT_TRUE(CFEqual(fromText.get(), fromBytes.get()));
        const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(fromText.get());
        EXPECT_EQ(std::memcmp(&bytes, &BYTES, sizeof bytes), 0);
    }
}

TEST(CFUUID, RefusesEveryOtherText) {
    for (const char* text :
         {"", "5CD9484B", "5CD9484B-4A86-11EF-8000-ABCDEF01234", "5CD9484B4-A86-11EF-8000-ABCDEF012345",
          "5CD9484B-4A86-11EF-8000-ABCDEF0123456", "5CD9484B-4A86-11EF-8000-0xCDEF012345",
          "5CD9484B+4A86-11EF-8000-ABCDEF012345", "{5CD9484B-4A86-11EF-8000-ABCDEF01234}"}) {
        EXPECT_FALSE(uuid(text)) << text;
    }
    const auto withEnd = makeString({u"5CD9484B-4A86-11EF-8000-ABCDEF012345\0", 37});
    EXPECT_EQ(CFUUIDCreateFromString(kCFAllocatorDefault, withEnd.get()), nullptr);
    EXPECT_EQ(CFUUIDCreateFromString(kCFAllocatorDefault, nullptr), nullptr);
}

TEST(CFUUID, ConstantsAreOneObjectAndOutliveEveryRelease) {
    const auto constantOf = [](UInt8 last) {
        return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x11, 0xEF, 0x80,
                                              0x00, 0xAB, 0xCD, 0xEF, 0x01, 0x23, last);
    };
    const CFUUIDRef constant = constantOf(0x45);
    EXPECT_EQ(constantOf(0x45), constant);
    CFRelease(constant);
    CFRelease(constant);
    EXPECT_TRUE(CFEqual(constant, uuid(TEXT).get()));
    EXPECT_TRUE(CFEqual(uuid(TEXT).get(), constant));
    EXPECT_FALSE(CFEqual(constantOf(0x46), uuid(TEXT).get()));
}

CFReference<CFURLRef> fromString(CFStringRef path) {
    return CFReference<CFURLRef>(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, false));
}

std::optional<std::string> pathOf(const CFReference<CFURLRef>& place, CFIndex size = 5000) {
    std::vector<UInt8> buffer(static_cast<std::size_t>(size));
    if (!place || !CFURLGetFileSystemRepresentation(place.get(), true, buffer.data(), size)) {
        return std::nullopt;
    }
    return reinterpret_cast<const char*>(buffer.data());
}

TEST(CFURL, GivesBackThePath) {
    for (const bool isDirectory : {false, true}) {
        for (const char* path : {"/", "/a b/%41/#?;=&+@:!$'()*,[]", "/caf\xC3\xA9", "/\xFF\xFE no text", "/a/../b/./c",
                                 "//double//slash", "/back\\slash", "/\x01\x7F\t\n\"<>|^`{}~", "/Icon\r"}) {
            EXPECT_EQ(pathOf(url(path, isDirectory)), path);
        }
    }
    EXPECT_EQ(pathOf(fromString(CFSTR("/caf\xC3\xA9/\xE2\x82\xAC"))), "/caf\xC3\xA9/\xE2\x82\xAC");
    EXPECT_EQ(pathOf(url("/tmp//", false)), "/tmp");
    EXPECT_EQ(pathOf(url("///", true)), "/");
    EXPECT_EQ(pathOf(url("some/file", false)), std::filesystem::current_path() / "some/file");
    EXPECT_EQ(pathOf(url("/abc", true), 5), "/abc");
    EXPECT_EQ(pathOf(url("/abc", true), 4), std::nullopt) << "no room for the end";
}

TEST(CFURL, RefusesWhatIsNotAPath) {
    EXPECT_FALSE(url(""));
    EXPECT_FALSE(url(std::string("/a\0b", 4)));
    EXPECT_FALSE(fromString(nullptr));
    EXPECT_FALSE(fromString(CFSTR("")));
    EXPECT_FALSE(fromString(makeString({u"/a\xD800", 3}).get()));
    EXPECT_EQ(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, CFSTR("a:b"), 1, false), nullptr);
}

TEST(CFDate, CountsSecondsFrom2001) {
    const auto seconds = [] {
        const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
        return now.count() - 978'307'200.0;
    };
    const double before = seconds();
    const CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    EXPECT_GE(now, before - 1e-6);
    EXPECT_LE(now, seconds() + 1e-6);
}

// On a Mac the locale is the user's setting, and the environment counts for nothing.
TEST(CFLocale, TheDecimalSeparatorIsThatOfTheNamedLocale) {
    setenv("LC_ALL", "", 1);
    unsetenv("LC_NUMERIC");
    // clang-format off
    const std::pair<std::string, const char*> rows[] = {
        {"POSIX", "."}, {"fr_FR.ISO8859-15@euro", ","}, {"de_CH.UTF-8", "."}, {"fr_CA", ","}, {"en_ZA", ","}, {"pt_AO", ","},
        {"uz_AF", "\xD9\xAB"}, {"fa_IR.UTF-8", "\xD9\xAB"}, {"ar_EG@numbers=latn", "."}, {"../../etc", "."},
        {std::string(4000, 'x'), "."},
    };
    // clang-format on
    for (const auto& [name, expected] : rows) {
        setenv("LANG", name.c_str(), 1);
        const CFReference<CFLocaleRef> locale(CFLocaleCopyCurrent());
        const auto separator = static_cast<CFStringRef>(CFLocaleGetValue(locale.get(), kCFLocaleDecimalSeparator));
        ASSERT_NE(separator, nullptr);
        EXPECT_EQ(test::text(separator), expected) << name;
    }
}

}  // namespace
