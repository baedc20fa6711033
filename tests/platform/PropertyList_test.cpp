#include "platform/CoreFoundation/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

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

struct Refusal {
    std::string bytes;
    Fault fault;
    const char* reason;
};

void expectRefused(const std::vector<Refusal>& cases) {
    for (const Refusal& c : cases) {
        const Parsed parsed = parse(c.bytes);
        EXPECT_EQ(parsed.root, nullptr) << c.reason;
        EXPECT_EQ(parsed.fault, c.fault) << c.reason;
        EXPECT_THAT(parsed.reason, testing::HasSubstr(c.reason));
    }
}

TEST(PropertyList, DamagedBinariesAreMalformed) {
    const std::string good = binary({"\x5F\x10\x02hi"});
    ASSERT_NE(parse(good).root, nullptr);
    const std::size_t trailer = good.size() - 32;
    const auto with = [&](std::size_t position, const std::string& bytes) {
        return std::string(good).replace(position, bytes.size(), bytes);
    };
    expectRefused({
        {"bplist00", Fault::malformed, "cut short"},
        {good.substr(0, good.size() - 1), Fault::malformed, "trailer"},
        {with(trailer + 6, "\0"s), Fault::malformed, "trailer"},
        {with(trailer + 6, "\x09"), Fault::malformed, "trailer"},
        {with(trailer + 7, "\0"s), Fault::malformed, "trailer"},
        {with(trailer + 8, bigEndian(0)), Fault::malformed, "trailer"},
        {with(trailer + 8, bigEndian(1ULL << 61)), Fault::malformed, "trailer"},
        {with(trailer + 16, bigEndian(1)), Fault::malformed, "trailer"},
        {with(trailer + 24, bigEndian(~0ULL)), Fault::malformed, "trailer"},
        {with(trailer - 8, bigEndian(7)), Fault::malformed, "lies outside"},
        {with(trailer - 8, bigEndian(trailer)), Fault::malformed, "lies outside"},
        {binary({"\x5F\x10\x03hi"}), Fault::malformed, "does not fit"},
        {binary({"\x5F\x13\x80\0\0\0\0\0\0\0"s}), Fault::malformed, "does not fit"},
        {binary({"\x6F\x13\x80\0\0\0\0\0\0\0"s}), Fault::malformed, "does not fit"},
        {binary({"\xAF\x13\x80\0\0\0\0\0\0\0"s}), Fault::malformed, "does not fit"},
        {binary({"\x5F\x23hi"}), Fault::malformed, "count"},
        {binary({"\x13zzzzzzz"}), Fault::malformed, "does not fit"},
        {binary({"\x51\xE9"}), Fault::malformed, "text is damaged"},
        {binary({"\xA1\0\x07"s}), Fault::malformed, "does not hold"},
        {binary({"\xD1\0\x01\0\x01"s, "\x10\x01"}), Fault::malformed, "no text"},
        {binary({"\0"s}), Fault::malformed, "unknown kind"},
        {binary({"\x15"s + std::string(32, 'x')}), Fault::malformed, "unknown kind"},
        {binary({"\xF0"}), Fault::malformed, "unknown kind"},
    });
}

TEST(PropertyList, BinariesThatATreeCannotCarryAreUnsupported) {
    std::vector<std::string> bomb;
    for (char i = 1; i < 40; ++i) {
        bomb.push_back("\xA2\0"s + i + '\0' + i);
    }
    bomb.push_back("\x10\x01");
    expectRefused({
        {binary({"\x53\x61\0\x62"s}), Fault::unsupported, "NUL"},
        {binary({"\x61\0\0"s}), Fault::unsupported, "NUL"},
        {binary({"\x61\xD8\0"s}), Fault::unsupported, "surrogate"},
        {binary({"\x61\xDC\0"s}), Fault::unsupported, "surrogate"},
        {binary({"\x62\xD8\0\xD8\0"s}), Fault::unsupported, "surrogate"},
        {binary({"\x60"}), Fault::unsupported, "empty text"},
        {binary({"\x14"s + bigEndian(1) + bigEndian(0)}), Fault::unsupported, "64 bits"},
        {binary({"\xC0"}), Fault::unsupported, "set"},
        {binary({"\xA1\0\0"s}), Fault::unsupported, "too deeply"},
        {binary(bomb), Fault::unsupported, "too large"},
        {std::string(cv::plist::MAX_FILE_SIZE + 1, ' '), Fault::unsupported, "too large"},
    });
}

TEST(PropertyList, DamagedXmlIsMalformed) {
    expectRefused({
        {"", Fault::malformed, "no property list"},
        {"text", Fault::malformed, "no property list"},
        {"<plist><dict><key>a</key>", Fault::malformed, "no property list"},
        {"<plist><string>a", Fault::malformed, "no property list"},
        {"<plist><unknown/></plist>", Fault::malformed, "no property list"},
        {"<plist><string>\xC3</string></plist>", Fault::malformed, "UTF-8"},
        {"\xFF\xFE<\0p\0"s, Fault::malformed, "UTF-8"},
        {"<plist><string>a\0</string></plist>"s, Fault::malformed, "UTF-8"},
        {"<plist><string>&#xD83D;&#xDE00;</string></plist>", Fault::malformed, "XML is damaged"},
        {"<plist><string>&#57343;</string></plist>", Fault::malformed, "XML is damaged"},
        {"<!-- <plist>", Fault::malformed, "XML is damaged"},
        {"<plist a=\"><string>x</string></plist>", Fault::malformed, "XML is damaged"},
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>", Fault::malformed, "XML is damaged"},
    });
}

TEST(PropertyList, NestingIsBoundedTheSameWayInBothForms) {
    EXPECT_NE(parse(nestedBinary(cv::plist::MAX_DEPTH)).root, nullptr);
    EXPECT_NE(parse(nestedXml(cv::plist::MAX_DEPTH)).root, nullptr);
    expectRefused({
        {nestedBinary(cv::plist::MAX_DEPTH + 1), Fault::unsupported, "too deeply"},
        {nestedXml(cv::plist::MAX_DEPTH + 1), Fault::unsupported, "too deeply"},
        {nestedXml(1000000), Fault::unsupported, "too deeply"},
        {"<plist>" + repeated("<array>", 1000000), Fault::unsupported, "too deeply"},
        {"<plist>" + repeated("<array a=\"/>\"><!-- </array> --><![CDATA[</array>]]>", 600), Fault::unsupported,
         "too deeply"},
        {"<?a \"?><!-- \"?>" + repeated("<array>", 600) + "-->", Fault::malformed, "XML is damaged"},
    });
}

TEST(PropertyList, IntegersKeepTheirSign) {
    const struct {
        cv::plist::Integer value;
        const char* xml;
    } cases[] = {
        {{0, false}, "0"},
        {{1ULL << 63, false}, "9223372036854775808"},
        {{(1ULL << 63) - 1, false}, "9223372036854775807"},
        {{1ULL << 63, true}, "-9223372036854775808"},
        {{~0ULL, false}, "18446744073709551615"},
        {{~0ULL, true}, "-1"},
    };
    for (const auto& c : cases) {
        const Parsed fromXml = parse("<plist><integer>" + std::string(c.xml) + "</integer></plist>");
        const Parsed fromBinary = parse(toBinary(cv::plist::makeInteger(c.value).get()));
        for (const Parsed* parsed : {&fromXml, &fromBinary}) {
            const cv::plist::Integer read = cv::plist::integerOf(parsed->root.get());
            EXPECT_EQ(read.bits, c.value.bits) << c.xml;
            EXPECT_EQ(read.negative, c.value.negative) << c.xml;
        }
    }
}

TEST(PropertyList, DatesKeepEveryBit) {
    for (const double seconds : {0.0, -0.5, 1e-9, 63113904000.0, -63113904000.25, std::numeric_limits<double>::max()}) {
        const Parsed parsed = parse(toBinary(cv::plist::makeDate(seconds).get()));
        EXPECT_EQ(cv::plist::dateOf(parsed.root.get()), seconds);
    }
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
            switch (random() % 3) {
                case 0:
                    bytes[position] = static_cast<char>(random());
                    break;
                case 1:
                    bytes.erase(position, random() % 8);
                    break;
                default:
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
