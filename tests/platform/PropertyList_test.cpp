#include "platform/PropertyList/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/platform/PreferenceFiles.h"
#include "tests/support/TempDir.h"

namespace {

using namespace std::string_literals;
using cv::plist::Data;
using cv::plist::Date;
using cv::plist::Integer;
using cv::plist::parse;
using cv::plist::Parsed;
using cv::plist::Real;
using cv::plist::toBinary;
using cv::plist::Value;
using Verdict = Parsed::Verdict;

std::string bigEndian(std::uint64_t value) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
    return bytes;
}

/// A binary property list with these objects, the first of them the root, and two bytes a reference.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(bytes.size());
        bytes += object;
    }
    const std::size_t tablePosition = bytes.size();
    return bytes + table + std::string(6, '\0') + "\x08\x02" + bigEndian(objects.size()) + bigEndian(0) +
           bigEndian(tablePosition);
}

/// `depth` arrays, each the only item of the one around it.
std::string nestedBinary(unsigned depth) {
    std::vector<std::string> objects;
    for (unsigned i = 1; i < depth; ++i) {
        objects.push_back("\xA1"s + static_cast<char>(i >> 8) + static_cast<char>(i & 0xFF));
    }
    objects.push_back("\xA0");
    return binary(objects);
}

std::string repeated(const std::string& text, unsigned count) {
    std::string result;
    for (unsigned i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

std::string xml(const std::string& value) {
    return "<plist version=\"1.0\">" + value + "</plist>";
}

std::string nestedXml(unsigned depth) {
    return xml(repeated("<array>", depth) + repeated("</array>", depth));
}

/// The value of this kind that the file holds.
template <typename Content>
Content read(const std::string& bytes) {
    Parsed parsed = parse(bytes);
    if (!parsed.root || !std::holds_alternative<Content>(parsed.root->content)) {
        throw std::runtime_error(bytes.substr(0, 100) + ": " + parsed.reason);
    }
    return std::get<Content>(parsed.root->content);
}

/// Files that are refused for the same reason.
struct Refusals {
    const char* reason;
    std::vector<std::string> files;
};

void expectRefused(Verdict verdict, const std::vector<Refusals>& cases) {
    for (const auto& [reason, files] : cases) {
        for (const std::string& bytes : files) {
            const Parsed parsed = parse(bytes);
            EXPECT_FALSE(parsed.root) << bytes.substr(0, 200);
            EXPECT_EQ(parsed.verdict, verdict) << bytes.substr(0, 200);
            EXPECT_THAT(parsed.reason, testing::HasSubstr(reason)) << bytes.substr(0, 200);
        }
    }
}

TEST(PropertyList, WhatOthersWriteIsWrittenAgainWithTheSameValuesAndTypes) {
    const test::TempDir folder;
    const std::string both =
        "{'n': -1, 'least': -2**63, 'most': 2**63-1, 'above': 2**63, 'big': 2**64-5, 'byte': 200, 'two': 2**16-1, "
        "'four': 2**32-1, 'five': 2**32, 'real': 1e-300, 'whole': 1.0, 'yes': True, 'no': False, 'one': 1, "
        "'text': 'é\\U0001f600\\ufeff<&>', 'none': '', '': 'no key', 'bytes': bytes(range(256)), 'nothing': b'', "
        "'list': [1, [], {}, 'x', True, 1.0, 'x', b'x'], 'old': datetime.datetime(1900, 1, 2, 3, 4, 5), "
        "'far': datetime.datetime(2500, 12, 31, 23, 59, 59), 'dict': {'a': {'b': 1}}, 'é' * 300: 1, "
        "'many': [str(i) for i in range(70000)]}";
    const std::string binaryOnly =
        "{'uid': plistlib.UID(70000), 'nul': 'a\\0b', 'part': datetime.datetime(2020, 1, 2, 3, 4, 5, 250000)}";
    const std::string sameAsBefore =
        "repr(sorted(p.items())) == repr(sorted(plistlib.load(open('" + folder / "before" + "','rb')).items()))";
    for (const auto& [entries, format] : {std::pair{both, "XML"}, {both, "BINARY"}, {binaryOnly, "BINARY"}}) {
        test::writeWithPython(folder / "before", entries, format);
        const Parsed parsed = parse(test::readFile(folder / "before"));
        ASSERT_TRUE(parsed.root) << format << parsed.reason;
        test::writeFile(folder / "after", toBinary(*parsed.root));
        EXPECT_EQ(test::python(sameAsBefore, folder / "after"), "True") << format;
    }
}

TEST(PropertyList, EqualValuesAreWrittenOnceAndEverySizeIsTheSmallest) {
    const Value root{cv::plist::Array{{true}, {Integer{1, false}}, {"a"s}, {"a"s}, {Integer{1, false}}, {true}}};
    EXPECT_EQ(toBinary(root),
              "bplist00"
              "\x09"
              "\x10\x01"
              "\x51"
              "a"
              "\xA6\1\2\3\3\2\1"
              "\x0D\x08\x09\x0B"s +
                  std::string(6, '\0') + "\1\1" + bigEndian(4) + bigEndian(0) + bigEndian(20));
    const std::string single = binary({"\x22\x3F\x40\0\0"s});
    EXPECT_EQ(read<Real>(single).value, 0.75);
    EXPECT_EQ(toBinary({read<Real>(single)}).substr(8, 5), "\x22\x3F\x40\0\0"s) << "single numbers stay single";
    EXPECT_EQ(toBinary({Real{0.1, true}}).at(8), '\x23') << "but not at the cost of digits";
}

TEST(PropertyList, ValuesThatCannotBeWrittenAreRefused) {
    EXPECT_THROW(toBinary({"\xC3"s}), std::invalid_argument);
    EXPECT_THROW(toBinary({"\xED\xA0\x80"s}), std::invalid_argument);
    EXPECT_THROW(toBinary({cv::plist::Dictionary{{"\xF5", {true}}}}), std::invalid_argument);
    Value deep{cv::plist::Array()};
    for (unsigned depth = 1; depth <= cv::plist::MAX_DEPTH; ++depth) {
        cv::plist::Array around;
        around.push_back(std::move(deep));
        deep = Value{std::move(around)};
    }
    EXPECT_THROW(toBinary(deep), std::length_error);
}

TEST(PropertyList, TextIsReadInEveryEncodingAndNotation) {
    const std::string cases[] = {
        xml("<string>\xC3\xA9&lt;</string>"),
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + xml("<string>&#233;<![CDATA[<]]></string>"),
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + xml("<string>\xE9&#x3C;</string>"),
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">" +
            xml("\n\t<string>\xC3\xA9<!-- -->&lt;</string>\n"),
        "<string>\xC3\xA9&lt;</string>",
        "\xFF\xFE<\0s\0t\0r\0i\0n\0g\0>\0\xE9\0&\0l\0t\0;\0<\0/\0s\0t\0r\0i\0n\0g\0>\0"s,
        "\xFE\xFF\0<\0s\0t\0r\0i\0n\0g\0>\0\xE9\0&\0l\0t\0;\0<\0/\0s\0t\0r\0i\0n\0g\0>"s,
        binary({"\x62\0\xE9\0<"s})};
    for (const std::string& bytes : cases) {
        EXPECT_EQ(read<std::string>(bytes), "\xC3\xA9<") << bytes;
    }
    EXPECT_EQ(read<std::string>(binary({"\x60"})), "");
}

TEST(PropertyList, NumbersAndDatesAndDataAreReadFromTheirText) {
    const std::vector<std::tuple<const char*, std::uint64_t, bool>> integers{{"+0", 0, false},
                                                                             {"-0", 0, false},
                                                                             {"\n 007 ", 7, false},
                                                                             {"0x1F", 31, false},
                                                                             {"-0Xa", ~10ULL + 1, true},
                                                                             {"-9223372036854775808", 1ULL << 63, true},
                                                                             {"18446744073709551615", ~0ULL, false}};
    for (const auto& [text, bits, isNegative] : integers) {
        const auto integer = read<Integer>(xml("<integer>"s + text + "</integer>"));
        EXPECT_EQ(integer.bits, bits) << text;
        EXPECT_EQ(integer.isNegative, isNegative) << text;
    }
    const double infinity = std::numeric_limits<double>::infinity();
    for (const auto& [text, value] : {std::pair{"0.25", 0.25},
                                      {"-1e3", -1000.0},
                                      {" +5 ", 5.0},
                                      {".5", 0.5},
                                      {"5e-324", 5e-324},
                                      {"inf", infinity},
                                      {"-Infinity", -infinity}}) {
        EXPECT_EQ(read<Real>(xml("<real>"s + text + "</real>")).value, value) << text;
    }
    EXPECT_TRUE(std::isnan(read<Real>(xml("<real>NaN</real>")).value));
    for (const auto& [text, seconds] : {std::pair{"2001-01-01T00:00:00Z", 0.0},
                                        {"1970-01-01T00:00:00Z", -978307200.0},
                                        {"2024-02-29T23:59:59Z", 730943999.0},
                                        {"0001-01-01T00:00:00Z", -63113904000.0},
                                        {"0000-12-31T00:00:00Z", -63113990400.0},
                                        {"-0001-12-31T00:00:00Z", -63145612800.0},
                                        {"12000-01-01T00:00:00Z", 315537897600.0}}) {
        EXPECT_EQ(read<Date>(xml("<date>"s + text + "</date>")).seconds, seconds) << text;
    }
    for (const auto& [text, bytes] : {std::pair{"", ""}, {"\n\tQQ = =\n", "A"}, {"QUI=", "AB"}, {"QU\r\nJD", "ABC"}}) {
        EXPECT_EQ(read<Data>(xml("<data>"s + text + "</data>")).bytes, bytes) << text;
    }
}

TEST(PropertyList, DamagedBinariesAreMalformed) {
    const std::string good = binary({"\x5F\x10\x02hi"});
    ASSERT_TRUE(parse(good).root);
    const std::size_t trailer = good.size() - 32;
    const auto with = [&](std::size_t position, const std::string& bytes) {
        return std::string(good).replace(position, bytes.size(), bytes);
    };
    expectRefused(
        Verdict::Malformed,
        {{"cut short", {"bplist00"}},
         {"trailer",
          {good.substr(0, good.size() - 1), with(trailer + 6, "\0"s), with(trailer + 6, "\x09"),
           with(trailer + 7, "\0"s), with(trailer + 8, bigEndian(0)), with(trailer + 8, bigEndian(1ULL << 61)),
           with(trailer + 16, bigEndian(1)), with(trailer + 24, bigEndian(~0ULL))}},
         {"lies outside", {with(trailer - 8, bigEndian(7)), with(trailer - 8, bigEndian(trailer))}},
         {"does not fit",
          {binary({"\x5F\x10\x03hi"}), binary({"\x5F\x13\x80\0\0\0\0\0\0\0"s}), binary({"\x6F\x13\x80\0\0\0\0\0\0\0"s}),
           binary({"\xAF\x13\x80\0\0\0\0\0\0\0"s}), binary({"\x13zzzzzzz"})}},
         {"count", {binary({"\x5F\x23hi"})}},
         {"text is damaged", {binary({"\x51\xE9"})}},
         {"does not hold", {binary({"\xA1\0\x07"s})}},
         {"no text", {binary({"\xD1\0\x01\0\x01"s, "\x10\x01"})}},
         {"unknown kind", {binary({"\x01"}), binary({"\x15"s + std::string(32, 'x')}), binary({"\xF0"})}}});
}

TEST(PropertyList, BinariesThatATreeCannotCarryAreUnsupported) {
    std::vector<std::string> bomb;
    for (char i = 1; i < 40; ++i) {
        bomb.push_back("\xA2\0"s + i + '\0' + i);
    }
    bomb.push_back("\x10\x01");
    expectRefused(
        Verdict::Unsupported,
        {{"surrogate", {binary({"\x61\xD8\0"s}), binary({"\x61\xDC\0"s}), binary({"\x62\xD8\0\xD8\0"s})}},
         {"64 bits", {binary({"\x14"s + bigEndian(1) + bigEndian(0)}), binary({"\x88"s + std::string(9, 'x')})}},
         {"set", {binary({"\xC0"}), binary({"\xB0"})}},
         {"null", {binary({"\0"s})}},
         {"same key",
          {binary({"\xD2\0\1\0\1\0\1\0\1"s,
                   "\x51"
                   "a"}),
           xml("<dict><key>a</key><true/><key>a</key><true/></dict>")}},
         {"another version", {"bplist15"}},
         {"too deeply", {binary({"\xA1\0\0"s})}},
         {"too large", {binary(bomb), std::string(cv::plist::MAX_FILE_SIZE + 1, ' ')}}});
}

TEST(PropertyList, DamagedXmlIsMalformed) {
    std::vector<std::string> texts;
    const auto add = [&](const std::string& element, const std::vector<std::string>& damaged) {
        for (const std::string& text : damaged) {
            texts.push_back(xml("<" + element + ">" + text + "</" + element + ">"));
        }
    };
    add("integer", {"", "-", "+-1", "2x5", "0x", "1.0", "1 2", "18446744073709551616", "-9223372036854775809",
                    "0x1FFFFFFFFFFFFFFFF"});
    add("real", {"", "abc", "1,5", "--1", "1e", "0x1p3", "nan(1)", "1.5 2"});
    add("date", {"", "2024-02-30T00:00:00Z", "2023-02-29T00:00:00Z", "2024-13-01T00:00:00Z", "2024-00-01T00:00:00Z",
                 "2024-01-01T24:00:00Z", "2024-01-01T00:60:00Z", "2024-01-01T00:00:60Z", "2024-01-01T00:00:00",
                 "2024-01-01 00:00:00Z", "2024-1-01T00:00:00Z", "24-01-01T00:00:00Z", "2024-01-01T00:00:+1Z",
                 "2024-01-01T00:00:00ZZ"});
    add("data", {"A", "QQ", "QQ=", "Q===", "====", "QQ==QQ==", "QU*D"});
    expectRefused(
        Verdict::Malformed,
        {{"in it is damaged", texts},
         {"no XML property list",
          {"", "text", "<plist><dict><key>a</key>", xml("<string>a</integer>"), xml("<true/>") + "<plist/>",
           xml("<string>\xC3</string>"), xml("<string>\xED\xA0\x80</string>"), xml("<string>&#xD83D;&#xDE00;</string>"),
           xml("<string>&undefined;</string>"), xml("<string>a\0</string>"s), "<plist a=\"><true/></plist>"}},
         {"element that no property list has", {xml("<unknown/>"), "<html/>"}},
         {"no value", {"<plist/>", xml("<!-- -->")}},
         {"more than one value", {xml("<true/><true/>"), xml("<dict/><array/>")}},
         {"inside another", {xml(xml("<true/>")), "<array><plist/></array>"}},
         {"should be",
          {xml("<string><true/></string>"), xml("<key>a</key>"), xml("<array><key>a</key></array>"),
           xml("<dict><key>a</key><key>b</key></dict>")}},
         {"has no key", {xml("<dict><true/></dict>"), xml("<dict><key>a</key><true/><true/></dict>")}},
         {"key in it has no value", {xml("<dict><key>a</key></dict>")}},
         {"where no value is",
          {xml("text<true/>"), xml("<array>x</array>"), xml("<true>x</true>"), xml("<dict>&#65;</dict>")}},
         {"not defined", {"<!DOCTYPE plist SYSTEM \"a.dtd\">" + xml("<string>&undefined;</string>")}}});
}

TEST(PropertyList, XmlThatATreeCannotCarryIsUnsupported) {
    expectRefused(
        Verdict::Unsupported,
        {{"document type", {"<!DOCTYPE plist [<!ENTITY a \"b\">]>" + xml("<string>&a;</string>")}},
         {"unknown encoding", {"<?xml version=\"1.0\" encoding=\"EBCDIC\"?>" + xml("<true/>")}},
         {"character that XML forbids", {xml("<string>a\x01</string>"), xml("<string>a\xEF\xBF\xBF</string>")}},
         {"old form", {"\n{ a = b; }"}},
         {"64 bits cannot carry", {xml("<real>1e999</real>"), xml("<real>1e-999</real>")}},
         {"attributes", {xml("<string lang=\"fr\">a</string>")}}});
}

TEST(PropertyList, NestingIsBoundedTheSameWayInBothForms) {
    EXPECT_TRUE(parse(nestedBinary(cv::plist::MAX_DEPTH)).root);
    EXPECT_TRUE(parse(nestedXml(cv::plist::MAX_DEPTH)).root);
    expectRefused(Verdict::Unsupported,
                  {{"too deeply", {nestedBinary(cv::plist::MAX_DEPTH + 1), nestedXml(cv::plist::MAX_DEPTH + 1)}}});
}

TEST(PropertyList, XmlNumbersDoNotDependOnTheLocale) {
    const test::TempDir folder;
    test::writeFile(folder / "source",
                    "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    test::run({"localedef", "--force", "-f", "UTF-8", "-i", folder / "source", folder / "comma"});
    EXPECT_TRUE(test::holdsInACopy([&folder] {
        setenv("LOCPATH", folder.path().c_str(), 1);
        const locale_t comma = newlocale(LC_NUMERIC_MASK, "comma", nullptr);
        return comma != nullptr && uselocale(comma) != nullptr && read<Real>(xml("<real>0.25</real>")).value == 0.25;
    }));
}

TEST(PropertyList, AnyBytesAreReadOrRefused) {
    const std::string sample =
        "<plist><dict><key>text</key><string>\xC3\xA9&amp;</string><key>list</key><array><integer>-5</integer>"
        "<real>0.25</real><true/><date>2026-01-02T03:04:05Z</date><data>AAEC</data><dict/></array><key>long</key>"
        "<string>a text that needs a count of its own</string></dict></plist>";
    const std::string seeds[] = {toBinary(parse(sample).root.value()), sample};

    std::mt19937 random(1);
    int read = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string bytes = seeds[round % 2];
        for (unsigned change = random() % 4 + 1; change > 0; --change) {
            const std::size_t position = random() % bytes.size();
            const auto kind = random() % 3;
            if (kind == 0) {
                bytes[position] = static_cast<char>(random());
            } else if (kind == 1) {
                bytes.erase(position, random() % 8);
            } else {
                bytes.insert(position, bytes.substr(random() % bytes.size(), random() % 16));
            }
        }
        const Parsed parsed = parse(bytes);
        if (!parsed.root) {
            EXPECT_NE(parsed.verdict, Verdict::Good);
            continue;
        }
        ++read;
        const std::string stored = toBinary(*parsed.root);
        const Parsed again = parse(stored);
        ASSERT_TRUE(again.root) << again.reason;
        EXPECT_EQ(toBinary(*again.root), stored);
    }
    EXPECT_GT(read, 100) << "the changes spared some";
}

}  // namespace
