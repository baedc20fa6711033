// Any value, written in the binary form by the code under test and as XML by a plain writer of its own, and read again.

#include <cmath>
#include <ctime>

#include "fuzz/Fuzz.h"
#include "fuzz/PropertyListSupport.h"
#include "fuzz/UtfModel.h"

namespace {

using namespace cv::plist;

constexpr double TO_2001 = 978307200;

std::string textFrom(fuzz::Input& input) {
    std::u32string text;
    for (auto count = input.ConsumeIntegralInRange(0, 12); count > 0; --count) {
        const auto c = input.ConsumeBool() ? char32_t{input.ConsumeIntegral<unsigned char>()}
                                           : input.ConsumeIntegralInRange<char32_t>(0, 0x10FFFF);
        text += c >= 0xD800 && c < 0xE000 ? U'\n' : c;
    }
    return fuzz::encodeUtf8(text);
}

Value scalarFrom(fuzz::Input& input) {
    const auto bits = input.ConsumeIntegral<std::uint64_t>() >> input.ConsumeIntegralInRange(0, 63);
    const double number = input.ConsumeFloatingPoint<double>();
    switch (input.ConsumeIntegralInRange(0, 7)) {
        case 0:
            return {input.ConsumeBool()};
        case 1:
            return {Integer{bits, false}};
        case 2:
            return {Integer{bits | std::uint64_t{1} << 63, true}};
        case 3:
            return {Real{number, false}};
        case 4:
            return {Real{static_cast<float>(std::fmod(number, 1e38)), true}};
        case 5:
            return {Date{static_cast<double>(input.ConsumeIntegralInRange<std::int64_t>(-62135596800, 253402300799)) -
                         TO_2001}};
        case 6:
            return {Data{input.ConsumeRandomLengthString(80)}};
        default:
            return {textFrom(input)};
    }
}

Value valueFrom(fuzz::Input& input, int depth) {
    const auto kind = depth > 0 ? input.ConsumeIntegralInRange(0, 4) : 0;
    if (kind < 3) {
        return scalarFrom(input);
    }
    Array items;
    Dictionary entries;
    for (auto count = input.ConsumeIntegralInRange(0, 6); count > 0; --count) {
        Value item = valueFrom(input, depth - 1);
        if (kind == 3) {
            items.push_back(std::move(item));
        } else {
            entries.insert_or_assign(textFrom(input), std::move(item));
        }
    }
    return kind == 3 ? Value{items} : Value{entries};
}

/// Writes values as XML; some say nothing of values that XML cannot carry.
struct XmlWriter {
    std::string text;
    bool isComplete = true;

    void element(const char* name, const std::string& content) {
        text += std::string("<") + name + ">" + content + "</" + name + ">\n";
    }

    void operator()(bool value) { text += value ? "<true/>" : "<false />"; }

    void operator()(const Integer& value) {
        element("integer",
                value.isNegative ? std::to_string(static_cast<std::int64_t>(value.bits)) : std::to_string(value.bits));
    }

    void operator()(const Real& value) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.17g", value.value);
        element("real", digits);
        isComplete = isComplete && !value.isSingle;
    }

    void operator()(const Date& date) {
        const auto seconds = static_cast<std::time_t>(date.seconds + TO_2001);
        std::tm parts{};
        gmtime_r(&seconds, &parts);
        char digits[64];
        std::snprintf(digits, sizeof digits, "%04d-%02d-%02dT%02d:%02d:%02dZ", parts.tm_year + 1900, parts.tm_mon + 1,
                      parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
        element("date", digits);
    }

    void operator()(const Data& data) {
        static constexpr const char* DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const auto byte = [&](std::size_t i) {
            return i < data.bytes.size() ? static_cast<unsigned char>(data.bytes[i]) : 0U;
        };
        std::string digits;
        for (std::size_t i = 0; i < data.bytes.size(); i += 3) {
            const unsigned int three = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
            for (std::size_t digit = 0; digit < 4; ++digit) {
                digits += i + digit > data.bytes.size() ? '=' : DIGITS[three >> (18 - 6 * digit) & 63];
            }
        }
        element("data", digits);
    }

    void operator()(const std::string& value) { element("string", escaped(value)); }

    void operator()(const Uid&) { isComplete = false; }

    void operator()(const Array& items) {
        text += "<array>";
        for (const Value& item : items) {
            std::visit(*this, item.content);
        }
        text += "</array>";
    }

    void operator()(const Dictionary& entries) {
        text += "<dict>";
        for (const auto& [key, item] : entries) {
            element("key", escaped(key));
            std::visit(*this, item.content);
        }
        text += "</dict>";
    }

    std::string escaped(const std::string& value) {
        std::string result;
        for (const char c : value) {
            // A control character is none of XML's, nor are the two last ones of the plane, nor a bare carriage return.
            isComplete = isComplete && (static_cast<unsigned char>(c) >= ' ' || c == '\t' || c == '\n');
            result += c == '<' ? "&lt;" : c == '&' ? "&#38;" : c == '>' ? "&gt;" : std::string(1, c);
        }
        isComplete = isComplete && value.find("\xEF\xBF\xBE") == std::string::npos &&
                     value.find("\xEF\xBF\xBF") == std::string::npos;
        return result;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    const Value value = valueFrom(input, 5);
    fuzz::expectReadAs(toBinary(value), value);
    XmlWriter writer;
    std::visit(writer, value.content);
    fuzz::trace() = " " + writer.text;
    if (writer.isComplete) {
        fuzz::expectReadAs(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">" + writer.text + "</plist>", value);
    }
    return 0;
}
