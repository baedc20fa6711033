#include "platform/CoreFoundation/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace {

using namespace std::string_literals;
using cv::plist::parse;
using cv::plist::Parsed;
using cv::plist::toBinary;
using Fault = Parsed::Fault;

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

std::string nestedXml(unsigned depth) {
    return "<plist>" + repeated("<array>", depth) + repeated("</array>", depth) + "</plist>";
}

/// Files that are refused for the same reason.
struct Refusals {
    const char* reason;
    std::vector<std::string> files;
};

void expectRefused(Fault fault, const std::vector<Refusals>& cases) {
    for (const auto& [reason, files] : cases) {
        for (const std::string& bytes : files) {
            const Parsed parsed = parse(bytes);
            EXPECT_EQ(parsed.root, nullptr) << reason;
            EXPECT_EQ(parsed.fault, fault) << reason;
            EXPECT_THAT(parsed.reason, testing::HasSubstr(reason));
        }
    }
}

TEST(PropertyList, DamagedBinariesAreMalformed) {
    const std::string good = binary({"\x5F\x10\x02hi"});
    ASSERT_NE(parse(good).root, nullptr);
    const std::size_t trailer = good.size() - 32;
    const auto with = [&](std::size_t position, const std::string& bytes) {
        return std::string(good).replace(position, bytes.size(), bytes);
    };
    expectRefused(
        Fault::malformed,
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
         {"unknown kind", {binary({"\0"s}), binary({"\x15"s + std::string(32, 'x')}), binary({"\xF0"})}}});
}

TEST(PropertyList, BinariesThatATreeCannotCarryAreUnsupported) {
    std::vector<std::string> bomb;
    for (char i = 1; i < 40; ++i) {
        bomb.push_back("\xA2\0"s + i + '\0' + i);
    }
    bomb.push_back("\x10\x01");
    expectRefused(Fault::unsupported,
                  {{"NUL", {binary({"\x53\x61\0\x62"s}), binary({"\x61\0\0"s})}},
                   {"surrogate", {binary({"\x61\xD8\0"s}), binary({"\x61\xDC\0"s}), binary({"\x62\xD8\0\xD8\0"s})}},
                   {"empty text", {binary({"\x60"})}},
                   {"64 bits", {binary({"\x14"s + bigEndian(1) + bigEndian(0)})}},
                   {"set", {binary({"\xC0"})}},
                   {"too deeply", {binary({"\xA1\0\0"s})}},
                   {"too large", {binary(bomb), std::string(cv::plist::MAX_FILE_SIZE + 1, ' ')}}});
}

TEST(PropertyList, DamagedXmlIsMalformed) {
    expectRefused(
        Fault::malformed,
        {{"no property list",
          {"", "text", "<plist><dict><key>a</key>", "<plist><string>a", "<plist><unknown/></plist>"}},
         {"UTF-8", {"<plist><string>\xC3</string></plist>", "\xFF\xFE<\0p\0"s, "<plist><string>a\0</string></plist>"s}},
         {"XML is damaged",
          {"<plist><string>&#xD83D;&#xDE00;</string></plist>", "<plist><string>&#57343;</string></plist>",
           "<!-- <plist>", "<plist a=\"><string>x</string></plist>",
           "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>",
           "<?a \"?><!-- \"?>" + repeated("<array>", 600) + "-->"}}});
}

TEST(PropertyList, NestingIsBoundedTheSameWayInBothForms) {
    EXPECT_NE(parse(nestedBinary(cv::plist::MAX_DEPTH)).root, nullptr);
    EXPECT_NE(parse(nestedXml(cv::plist::MAX_DEPTH)).root, nullptr);
    expectRefused(Fault::unsupported,
                  {{"too deeply",
                    {nestedBinary(cv::plist::MAX_DEPTH + 1), nestedXml(cv::plist::MAX_DEPTH + 1), nestedXml(1000000),
                     "<plist>" + repeated("<array>", 1000000),
                     "<plist>" + repeated("<array a=\"/>\"><!-- </array> --><![CDATA[</array>]]>", 600)}}});
}

TEST(PropertyList, XmlNumbersDoNotDependOnTheLocale) {
    const test::TempDir folder;
    test::writeFile(folder / "source",
                    "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    test::run({"localedef", "--force", "-f", "UTF-8", "-i", folder / "source", folder / "comma"});
    EXPECT_TRUE(test::holdsInACopy([&folder] {
        setenv("LOCPATH", folder.path().c_str(), 1);
        const locale_t comma = newlocale(LC_NUMERIC_MASK, "comma", nullptr);
        double value = 0;
        if (comma != nullptr && uselocale(comma) != nullptr) {
            plist_get_real_val(parse("<plist><real>0.25</real></plist>").root.get(), &value);
        }
        return value == 0.25;
    }));
}

TEST(PropertyList, AnyBytesAreReadOrRefused) {
    const Parsed sample = parse(
        "<plist><dict><key>text</key><string>\xC3\xA9&amp;</string><key>list</key><array><integer>-5</integer>"
        "<real>0.25</real><true/><date>2026-01-02T03:04:05Z</date><data>AAEC</data><dict/></array><key>long</key>"
        "<string>a text that needs a count of its own</string></dict></plist>");
    ASSERT_NE(sample.root, nullptr);
    char* xml = nullptr;
    std::uint32_t xmlSize = 0;
    plist_to_xml(sample.root.get(), &xml, &xmlSize);
    const std::string seeds[] = {toBinary(sample.root.get()), std::string(xml, xmlSize)};
    plist_to_xml_free(xml);

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
        if (parsed.root == nullptr) {
            EXPECT_NE(parsed.fault, Fault::none);
            continue;
        }
        ++read;
        const std::string stored = toBinary(parsed.root.get());
        const Parsed again = parse(stored);
        ASSERT_NE(again.root, nullptr) << again.reason;
        EXPECT_EQ(toBinary(again.root.get()), stored);
    }
    EXPECT_GT(read, 100) << "the changes spared some";
}

}  // namespace
