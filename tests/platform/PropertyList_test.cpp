#include "platform/PropertyList/PropertyList.h"

#include <clocale>
#include <stdexcept>

#include "tests/support/PreferenceFiles.h"
#include "tests/support/Test.h"

namespace {

using namespace test;
using namespace cv::plist;
using Verdict = Parsed::Verdict;

/// A binary property list with these objects, the first of them the root, and two bytes a reference.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += test::bigEndian(bytes.size());
        bytes += object;
    }
    const std::size_t tablePosition = bytes.size();
    return bytes + table + std::string(6, '\0') + "\x08\x02" + test::bigEndian(objects.size()) + test::bigEndian(0) +
           test::bigEndian(tablePosition);
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

std::string xml(const std::string& value) {
    return "<plist version=\"1.0\">" + value + "</plist>";
}

std::string elementOf(const std::string& name, const std::string& text) {
    return xml("<" + name + ">" + text + "</" + name + ">");
}

std::string nestedXml(unsigned depth) {
    std::string begin, end;
    while (depth-- > 0) {
        begin += "<array>";
        end += "</array>";
    }
    return xml(begin + end);
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

/// Expects that files are refused, each list of them for a reason.
void expectRefused(Verdict verdict, const std::vector<std::pair<const char*, std::vector<std::string>>>& rows) {
    for (const auto& [reason, files] : rows) {
        for (const std::string& bytes : files) {
            const Parsed parsed = parse(bytes);
            EXPECT_TRUE(!parsed.root && parsed.verdict == verdict) << bytes.substr(0, 200);
            EXPECT_THAT(parsed.reason, HasSubstr(reason)) << bytes.substr(0, 200);
        }
    }
}

TEST(PropertyList, WhatOthersWriteIsWrittenAgainWithTheSameValuesAndTypes) {
    const TempDir folder;
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
        writeWithPython(folder / "before", entries, format);
        const Parsed parsed = parse(readFile(folder / "before"));
        ASSERT_TRUE(parsed.root) << format << parsed.reason;
        writeFile(folder / "after", toBinary(*parsed.root));
        EXPECT_EQ(python(sameAsBefore, folder / "after"), "True") << format;
    }
}

TEST(PropertyList, EqualValuesAreWrittenOnceAndEverySizeIsTheSmallest) {
    const Value root{Array{{true}, {Integer{1, false}}, {"a"s}, {"a"s}, {Integer{1, false}}, {true}}};
    const std::string objects = "\x09\x10\x01Qa\xA6\1\2\3\3\2\1",
                      table = "\x0D\x08\x09\x0B" + std::string(6, '\0') + "\1\1";
    EXPECT_EQ(toBinary(root),
              "bplist00" + objects + table + test::bigEndian(4) + test::bigEndian(0) + test::bigEndian(20));
    const std::string single = binary({"\x22\x3F\x40\0\0"s});
    EXPECT_EQ(read<Real>(single).value, 0.75);
    EXPECT_EQ(toBinary({read<Real>(single)}).substr(8, 5), "\x22\x3F\x40\0\0"s) << "single numbers stay single";
    EXPECT_EQ(toBinary({Real{0.1, true}}).at(8), '\x23') << "but not at the cost of digits";
}

TEST(PropertyList, ValuesThatCannotBeWrittenAreRefused) {
    EXPECT_THROW(toBinary({"\xC3"s}), std::invalid_argument);
    EXPECT_THROW(toBinary({"\xED\xA0\x80"s}), std::invalid_argument);
    EXPECT_THROW(toBinary({Dictionary{{"\xF5", {true}}}}), std::invalid_argument);
    Value deep{Array()};
    for (unsigned depth = 1; depth <= MAX_DEPTH; ++depth) {
        deep = Value{Array{std::move(deep)}};
    }
    EXPECT_THROW(toBinary(deep), std::length_error);
}

TEST(PropertyList, TextIsReadInEveryEncodingAndNotation) {
    // clang-format off
    const std::string cases[] = {
        xml("<string>\xC3\xA9&lt;</string>"), "<string>\xC3\xA9&lt;</string>", binary({"\x62\0\xE9\0<"s}),
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + xml("<string>&#233;<![CDATA[<]]></string>"),
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + xml("<string>\xE9&#x3C;</string>"),
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">" + xml("\n\t<string>\xC3\xA9<!-- -->&lt;</string>\n"),
        "\xFF\xFE<\0s\0t\0r\0i\0n\0g\0>\0\xE9\0&\0l\0t\0;\0<\0/\0s\0t\0r\0i\0n\0g\0>\0"s,
        "\xFE\xFF\0<\0s\0t\0r\0i\0n\0g\0>\0\xE9\0&\0l\0t\0;\0<\0/\0s\0t\0r\0i\0n\0g\0>"s};
    // clang-format on
    for (const std::string& bytes : cases) {
        EXPECT_EQ(read<std::string>(bytes), "\xC3\xA9<") << bytes;
    }
    EXPECT_EQ(read<std::string>(binary({"\x60"})), "");
}

TEST(PropertyList, NumbersAndDatesAndDataAreReadFromTheirText) {
    const auto integer = [](std::uint64_t bits, bool isNegative = false) { return Value{Integer{bits, isNegative}}; };
    const auto real = [](double value) { return Value{Real{value, false}}; };
    const auto date = [](double seconds) { return Value{Date{seconds}}; };
    const auto data = [](const char* bytes) { return Value{Data{bytes}}; };
    const double infinity = std::numeric_limits<double>::infinity();
    // clang-format off
    const struct { const char* element; std::vector<std::pair<const char*, Value>> values; } rows[] = {
        {"integer", {{"+0", integer(0)}, {"-0", integer(0)}, {"\n 007 ", integer(7)}, {"0x1F", integer(31)}, {"-0Xa", integer(~10ULL + 1, true)},
                     {"-9223372036854775808", integer(1ULL << 63, true)}, {"18446744073709551615", integer(~0ULL)}}},
        {"real", {{"0.25", real(0.25)}, {"-1e3", real(-1000)}, {" +5 ", real(5)}, {".5", real(0.5)}, {"5e-324", real(5e-324)},
                  {"inf", real(infinity)}, {"-Infinity", real(-infinity)}, {"NaN", real(std::nan(""))}}},
        {"date", {{"2001-01-01T00:00:00Z", date(0)}, {"1970-01-01T00:00:00Z", date(-978307200)}, {"2024-02-29T23:59:59Z", date(730943999)},
                  {"0001-01-01T00:00:00Z", date(-63113904000)}, {"0000-12-31T00:00:00Z", date(-63113990400)},
                  {"-0001-12-31T00:00:00Z", date(-63145612800)}, {"12000-01-01T00:00:00Z", date(315537897600)}}},
        {"data", {{"", data("")}, {"\n\tQQ = =\n", data("A")}, {"QUI=", data("AB")}, {"QU\r\nJD", data("ABC")}}},
    };
    // clang-format on
    for (const auto& [element, values] : rows) {
        for (const auto& [text, value] : values) {
            const Parsed parsed = parse(elementOf(element, text));
            ASSERT_TRUE(parsed.root) << text;
            EXPECT_EQ(toBinary(*parsed.root), toBinary(value)) << text;
        }
    }
}

TEST(PropertyList, DamagedBinariesAreMalformed) {
    const std::string good = binary({"\x5F\x10\x02hi"});
    ASSERT_TRUE(parse(good).root);
    const std::size_t trailer = good.size() - 32;
    const auto with = [&](std::size_t position, const std::string& bytes) {
        return std::string(good).replace(position, bytes.size(), bytes);
    };
    // clang-format off
    expectRefused(Verdict::Malformed, {
        {"cut short", {"bplist00"}},
        {"trailer", {good.substr(0, good.size() - 1), with(trailer + 6, "\0"s), with(trailer + 6, "\x09"), with(trailer + 7, "\0"s),
                     with(trailer + 8, test::bigEndian(0)), with(trailer + 8, test::bigEndian(1ULL << 61)), with(trailer + 16, test::bigEndian(1)),
                     with(trailer + 24, test::bigEndian(trailer + 1)), with(trailer + 24, test::bigEndian(~0ULL))}},
        {"out of range", {with(trailer - 8, test::bigEndian(7)), with(trailer - 8, test::bigEndian(trailer - 8))}},
        {"does not fit", {binary({"\x5F\x10\x03hi"}), binary({"\x5F\x13\x80\0\0\0\0\0\0\0"s}), binary({"\x6F\x13\x80\0\0\0\0\0\0\0"s}),
                          binary({"\xAF\x13\x80\0\0\0\0\0\0\0"s}), binary({"\x13zzzzzzz"})}},
        {"count", {binary({"\x5F\x23hi"})}},
        {"text is damaged", {binary({"\x51\xE9"})}},
        {"does not hold", {binary({"\xA1\0\x01"s})}},
        {"not text", {binary({"\xD1\0\x01\0\x01"s, "\x10\x01"})}},
        {"unknown kind", {binary({"\x01"}), binary({"\x15"s + std::string(32, 'x')}), binary({"\xF0"})}}});
    // clang-format on
}

TEST(PropertyList, DamagedXmlIsMalformed) {
    // clang-format off
    const std::pair<const char*, std::vector<const char*>> damaged[] = {
        {"integer", {"", "-", "+-1", "2x5", "0x", "1.0", "1 2", "18446744073709551616", "-9223372036854775809", "0x1FFFFFFFFFFFFFFFF"}},
        {"real", {"", "abc", "1,5", "--1", "1e", "0x1p3", "nan(1)", "1.5 2"}},
        {"date", {"", "2024-02-30T00:00:00Z", "2023-02-29T00:00:00Z", "2024-13-01T00:00:00Z", "2024-00-01T00:00:00Z", "2024-01-01T24:00:00Z",
                  "2024-01-01T00:60:00Z", "2024-01-01T00:00:60Z", "2024-01-01T00:00:00", "2024-01-01 00:00:00Z", "2024-1-01T00:00:00Z",
                  "24-01-01T00:00:00Z", "2024-01-01T00:00:+1Z", "2024-01-01T00:00:00ZZ"}},
        {"data", {"A", "QQ", "QQ=", "Q===", "====", "QQ==QQ==", "QQ=Q", "QUI=QUJD", "QU*D"}}};
    for (const auto& [element, texts] : damaged) {
        for (const char* text : texts) {
            expectRefused(Verdict::Malformed, {{"in it is damaged", {elementOf(element, text)}}});
        }
    }
    expectRefused(Verdict::Malformed, {
        {"not an XML property list",
         {"", "text", "<plist><dict><key>a</key>", xml("<string>a</integer>"), xml("<true/>") + "<plist/>", xml("<string>\xC3</string>"),
          xml("<string>\xED\xA0\x80</string>"), xml("<string>&#xD83D;&#xDE00;</string>"), xml("<string>&undefined;</string>"),
          xml("<string>a\0</string>"s), "<plist a=\"><true/></plist>"}},
        {"does not belong in a property list", {xml("<unknown/>"), "<html/>"}},
        {"no value", {"<plist/>", xml("<!-- -->")}},
        {"more than one value", {xml("<true/><true/>"), xml("<dict/><array/>")}},
        {"inside another", {xml(xml("<true/>")), "<array><plist/></array>"}},
        {"should be", {xml("<string><true/></string>"), xml("<key>a</key>"), xml("<array><key>a</key></array>"),
                       xml("<dict><key>a</key><key>b</key></dict>")}},
        {"has no key", {xml("<dict><true/></dict>"), xml("<dict><key>a</key><true/><true/></dict>")}},
        {"key in it has no value", {xml("<dict><key>a</key></dict>")}},
        {"where no value is", {xml("text<true/>"), xml("<array>x</array>"), xml("<true>x</true>"), xml("<dict>&#65;</dict>")}},
        {"not defined", {"<!DOCTYPE plist SYSTEM \"a.dtd\">" + xml("<string>&undefined;</string>")}}});
    // clang-format on
}

TEST(PropertyList, WhatATreeCannotCarryIsUnsupported) {
    std::vector<std::string> bomb;
    for (char i = 1; i < 40; ++i) {
        bomb.push_back("\xA2\0"s + i + '\0' + i);
    }
    bomb.push_back("\x10\x01");
    const std::string letterA{'\x51', 'a'};
    // clang-format off
    expectRefused(Verdict::Unsupported, {
        {"surrogate", {binary({"\x61\xD8\0"s}), binary({"\x61\xDC\0"s}), binary({"\x62\xD8\0\xD8\0"s})}},
        {"64 bits", {binary({"\x14"s + test::bigEndian(1) + test::bigEndian(0)}), binary({"\x88"s + std::string(9, 'x')})}},
        {"set", {binary({"\xC0"}), binary({"\xB0"})}},
        {"null", {binary({"\0"s})}},
        {"same key", {binary({"\xD2\0\1\0\1\0\1\0\1"s, letterA}), xml("<dict><key>a</key><true/><key>a</key><true/></dict>")}},
        {"another version", {"bplist15"}},
        {"too deeply", {binary({"\xA1\0\0"s}), nestedBinary(MAX_DEPTH + 1), nestedXml(MAX_DEPTH + 1)}},
        {"too large", {binary(bomb), std::string(MAX_FILE_SIZE + 1, ' ')}},
        {"document type", {"<!DOCTYPE plist [<!ENTITY a \"b\">]>" + xml("<string>&a;</string>")}},
        {"unknown encoding", {"<?xml version=\"1.0\" encoding=\"EBCDIC\"?>" + xml("<true/>")}},
        {"character that XML forbids", {xml("<string>a\x01</string>"), xml("<string>a\xEF\xBF\xBF</string>")}},
        {"old form", {"\n{ a = b; }"}},
        {"64 bits cannot carry", {xml("<real>1e999</real>"), xml("<real>1e-999</real>")}},
        {"attributes", {xml("<string lang=\"fr\">a</string>")}}});
    // clang-format on
    EXPECT_TRUE(parse(nestedBinary(MAX_DEPTH)).root);
    EXPECT_TRUE(parse(nestedXml(MAX_DEPTH)).root);
}

TEST(PropertyList, XmlNumbersDoNotDependOnTheLocale) {
    const TempDir folder;
    writeFile(folder / "source",
              "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    run({"localedef", "--force", "-f", "UTF-8", "-i", folder / "source", folder / "comma"});
    EXPECT_TRUE(holdsInACopy([&folder] {
        setenv("LOCPATH", folder.path().c_str(), 1);
        const locale_t comma = newlocale(LC_NUMERIC_MASK, "comma", nullptr);
        return comma != nullptr && uselocale(comma) != nullptr && read<Real>(xml("<real>0.25</real>")).value == 0.25;
    }));
}

}  // namespace
