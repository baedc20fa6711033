// Files as large as they may be, made to cost as much as they can: each is read or refused within bounded memory.

#include <sys/resource.h>

#include "platform/PropertyList/PropertyList.h"
#include "tests/support/PreferenceFiles.h"

namespace {

using namespace test;
using Verdict = cv::plist::Parsed::Verdict;
using cv::plist::MAX_FILE_SIZE;

constexpr rlim_t MAX_MEMORY = rlim_t{512} << 20;

/// `text`, as often as a file may hold it or `most` times, between `begin` and `end`.
std::string filled(const std::string& begin, const std::string& text, const std::string& end,
                   std::size_t most = MAX_FILE_SIZE) {
    std::string bytes;
    bytes.reserve(MAX_FILE_SIZE);
    bytes = begin;
    while (most-- > 0 && bytes.size() + text.size() + end.size() <= MAX_FILE_SIZE) {
        bytes += text;
    }
    return bytes += end;
}

std::string inPlist(const std::string& begin, const std::string& text, const std::string& end) {
    return filled("<plist>" + begin, text, end + "</plist>");
}

/// A binary array that refers so many times to the object.
std::string references(std::size_t count, const std::string& object) {
    const std::string bytes = filled("bplist00\xAF\x13" + bigEndian(count), "\x01", object, count);
    return bytes + bigEndian(8, 4) + bigEndian(bytes.size() - object.size(), 4) + std::string(6, '\0') + "\4\1" +
           bigEndian(2) + bigEndian(0) + bigEndian(bytes.size());
}

std::string longTexts(char marker, std::size_t count, std::size_t size) {
    return references(count, std::string{marker, '\x13'} + bigEndian(size) + std::string(30U << 20, 'x'));
}

// clang-format off
const struct { const char* name; Verdict verdict; std::function<std::string()> bytes; } ROWS[] = {
    {"every reference to one value", Verdict::Unsupported, [] { return references(60'000'000, "\x09"); }},
    {"many references to one text", Verdict::Good, [] { return references(500'000, "\x5F\x10\x20" + std::string(32, 'x')); }},
    {"many references to one empty array", Verdict::Good, [] { return references(500'000, "\xA0"); }},
    {"references to a long text", Verdict::Unsupported, [] { return longTexts('\x5F', 1000, 30U << 20); }},
    {"a long text of two-byte units", Verdict::Good, [] { return longTexts('\x6F', 1, 15U << 20); }},
    {"open arrays", Verdict::Unsupported, [] { return filled("", "<array>", ""); }},
    {"open elements", Verdict::Malformed, [] { return filled("", "<a>", ""); }},
    {"arrays of one", Verdict::Unsupported, [] { return inPlist("<array>", "<array><true/></array>", "</array>"); }},
    {"empty lines", Verdict::Unsupported, [] { return inPlist("<string>", "\n", "</string>"); }},
    {"character references", Verdict::Good, [] { return inPlist("<string>", "&#9;", "</string>"); }},
    {"one character reference", Verdict::Unsupported, [] { return inPlist("<string>&#", "0", "9;</string>"); }},
    {"digits", Verdict::Good, [] { return inPlist("<real>0.", "1", "</real>"); }},
    {"data", Verdict::Good, [] { return inPlist("<data>", "QUJD", "</data>"); }},
    {"an attribute", Verdict::Unsupported, [] { return filled("<plist a=\"", "x", "\"><true/></plist>"); }},
    {"a comment", Verdict::Unsupported, [] { return filled("<!--", "x", "--><plist><true/></plist>"); }},
    {"comments", Verdict::Good, [] { return filled("", "<!---->", "<plist><true/></plist>"); }},
    {"spaces before anything", Verdict::Good, [] { return filled("", " ", "<true/>"); }},
};
// clang-format on

TEST(PropertyListLimits, EveryFileIsReadOrRefusedWithinBoundedMemory) {
    for (const auto& row : ROWS) {
        EXPECT_TRUE(holdsInACopy([&row] {
            const rlimit limit{MAX_MEMORY, MAX_MEMORY};
            return setrlimit(RLIMIT_AS, &limit) == 0 && cv::plist::parse(row.bytes()).verdict == row.verdict;
        })) << row.name;
    }
}

}  // namespace
