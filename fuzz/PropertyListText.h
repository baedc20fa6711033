#pragma once

#include <ctime>
#include <string>

#include "fuzz/Fuzz.h"
#include "platform/PropertyList/PropertyList.h"

namespace fuzz {

/// A value as an XML property list, in the plainest way; also what two values are compared by, since it shows every bit
/// of a value. `isXml` is false when the value has something that XML cannot carry.
struct PropertyListText {
    std::string text;
    bool isXml = true;

    void element(const std::string& name, const std::string& content) {
        text += "<" + name + ">" + content + "</" + name + ">\n";
    }

    void operator()(bool value) { text += value ? "<true/>" : "<false />"; }

    void operator()(const cv::plist::Integer& value) {
        const auto number = static_cast<std::int64_t>(value.bits);
        element("integer", value.isNegative ? std::to_string(number) : std::to_string(value.bits));
    }

    void operator()(const cv::plist::Real& value) {
        element(value.isSingle ? "single" : "real", shown(value.value));
        isXml = isXml && !value.isSingle;
    }

    void operator()(const cv::plist::Date& date) {
        constexpr double TO_2001 = 978307200;
        const double seconds = date.seconds + TO_2001;
        const bool isPlain = seconds >= -62135596800 && seconds < 253402300800 &&
                             seconds == static_cast<double>(static_cast<std::int64_t>(seconds));
        const auto time = isPlain ? static_cast<std::time_t>(seconds) : 0;
        std::tm parts{};
        char digits[64];
        gmtime_r(&time, &parts);
        std::snprintf(digits, sizeof digits, "%04d-%02d-%02dT%02d:%02d:%02dZ", parts.tm_year + 1900, parts.tm_mon + 1,
                      parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
        element("date", isPlain ? digits : shown(date.seconds));
        isXml = isXml && isPlain;
    }

    void operator()(const cv::plist::Data& data) {
        static constexpr const char* BASE64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const std::string& bytes = data.bytes;
        const auto byte = [&](std::size_t i) { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U; };
        std::string digits;
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            const unsigned int three = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
            for (std::size_t digit = 0; digit < 4; ++digit) {
                digits += i + digit > bytes.size() ? '=' : BASE64[three >> (18 - 6 * digit) & 63];
            }
        }
        element("data", digits);
    }

    void operator()(const std::string& value) { element("string", escaped(value)); }

    void operator()(const cv::plist::Uid& uid) {
        element("uid", std::to_string(uid.number));
        isXml = false;
    }

    void operator()(const cv::plist::Array& items) {
        text += "<array>";
        for (const cv::plist::Value& item : items) {
            std::visit(*this, item.content);
        }
        text += "</array>";
    }

    void operator()(const cv::plist::Dictionary& entries) {
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
            // XML has no control characters, and reads a carriage return as a line feed.
            isXml = isXml && (static_cast<unsigned char>(c) >= ' ' || c == '\t' || c == '\n');
            result += c == '<' ? "&lt;" : c == '&' ? "&#38;" : c == '>' ? "&gt;" : std::string(1, c);
        }
        isXml =
            isXml && value.find("\xEF\xBF\xBE") == std::string::npos && value.find("\xEF\xBF\xBF") == std::string::npos;
        return result;
    }
};

inline PropertyListText textOf(const cv::plist::Value& value) {
    PropertyListText text;
    std::visit(text, value.content);
    return text;
}

/// Fails unless the bytes are read as a property list of this value.
inline void expectReadAs(const std::string& bytes, const std::string& text) {
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    expectEqual("what is wrong with a good property list", parsed.reason, "");
    expectEqual("the value that is read", textOf(*parsed.root).text, text);
}

}  // namespace fuzz
