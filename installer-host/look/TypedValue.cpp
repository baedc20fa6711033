#include "installer-host/look/TypedValue.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <stdexcept>
#include <utility>
#include <variant>

#include "platform/Epoch.h"
#include "platform/PropertyList/PropertyList.h"
#include "platform/PropertyList/Reading.h"
#include "platform/PropertyList/XmlScalars.h"

namespace host {

namespace {

using nlohmann::json;
namespace plist = cv::plist;

TypedValue makeValue(const char* type, json value) {
    return {{"type", type}, {"value", std::move(value)}};
}

/// A number as JSON has it, or as text where it has none.
json realData(double real) {
    if (std::isfinite(real)) {
        return real;
    }
    return std::isnan(real) ? "nan" : real < 0 ? "-inf" : "inf";
}

double realOf(const json& data) {
    if (data.is_number()) {
        return data.get<double>();
    }
    const auto text = data.get<std::string>();
    if (text != "nan" && text != "inf" && text != "-inf") {
        throw std::invalid_argument("'" + text + "' is not a real");
    }
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    return text == "nan" ? std::numeric_limits<double>::quiet_NaN() : text == "inf" ? INFINITE : -INFINITE;
}

TypedValue realValue(plist::Real real) {
    TypedValue data = makeValue("real", realData(real.value));
    if (real.isSingle) {
        data["single"] = true;
    }
    return data;
}

/// `seconds` since 1 January 2001 UTC in ISO 8601.
TypedValue dateValue(double seconds) {
    constexpr double YEAR_1000 = -30610224000, LAST_OF_9999 = 253402300799;
    const double unixSeconds = std::floor(seconds + cv::SECONDS_FROM_1970_TO_2001);
    std::string shown = "out of range";
    if (std::abs(unixSeconds) <= LAST_OF_9999) {
        const auto time = static_cast<std::time_t>(unixSeconds);
        std::tm parts{};
        char text[40];
        gmtime_r(&time, &parts);
        shown.assign(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
    }
    TypedValue data = makeValue("date", shown);
    if (!(unixSeconds >= YEAR_1000 && unixSeconds <= LAST_OF_9999) || std::floor(seconds) != seconds) {
        data["seconds"] = realData(seconds);
    }
    return data;
}

plist::Date dateOf(const TypedValue& data) {
    if (const auto seconds = data.find("seconds"); seconds != data.end()) {
        return {realOf(*seconds)};
    }
    try {
        return plist::dateFrom(data.at("value").get<std::string>());
    } catch (const plist::Refusal& refusal) {
        throw std::invalid_argument(refusal.reason);
    }
}

/// What JSON data there is for each kind of value.
struct MakeData {
    TypedValue operator()(bool flag) const { return makeValue("boolean", flag); }
    TypedValue operator()(const std::string& text) const { return makeValue("string", text); }
    TypedValue operator()(plist::Integer integer) const {
        return makeValue("integer",
                         integer.isNegative ? json(static_cast<std::int64_t>(integer.bits)) : json(integer.bits));
    }
    TypedValue operator()(plist::Real real) const { return realValue(real); }
    TypedValue operator()(plist::Date date) const { return dateValue(date.seconds); }
    TypedValue operator()(const plist::Data& data) const { return makeValue("data", hexText(data.bytes)); }
    TypedValue operator()(plist::Uid uid) const { return makeValue("uid", uid.number); }

    TypedValue operator()(const plist::Array& array) const {
        json items = json::array();
        for (const plist::Value& item : array) {
            items.push_back(typedValue(item));
        }
        return makeValue("array", std::move(items));
    }

    TypedValue operator()(const plist::Dictionary& dictionary) const {
        json items = json::object();
        for (const auto& [key, item] : dictionary) {
            items[key] = typedValue(item);
        }
        return makeValue("dictionary", std::move(items));
    }
};

plist::Integer integerOf(const json& number) {
    if (!number.is_number_integer()) {
        throw std::invalid_argument("an integer is not a whole number");
    }
    const bool isNegative = !number.is_number_unsigned() && number.get<std::int64_t>() < 0;
    return {isNegative ? static_cast<std::uint64_t>(number.get<std::int64_t>()) : number.get<std::uint64_t>(),
            isNegative};
}

plist::Value valueOf(const TypedValue& data, unsigned depth);

plist::Array arrayOf(const json& items, unsigned depth) {
    plist::Array array;
    for (const json& item : items.get_ref<const json::array_t&>()) {
        array.push_back(valueOf(item, depth));
    }
    return array;
}

plist::Dictionary dictionaryOf(const json& items, unsigned depth) {
    plist::Dictionary dictionary;
    for (const auto& [key, item] : items.get_ref<const json::object_t&>()) {
        dictionary.emplace(key, valueOf(item, depth));
    }
    return dictionary;
}

plist::Value valueOf(const TypedValue& data, unsigned depth) {
    if (depth > plist::MAX_DEPTH) {
        throw std::invalid_argument("a value is nested too deeply");
    }
    const auto type = data.at("type").get<std::string>();
    const json& value = data.at("value");
    if (type == "boolean") {
        return {value.get<bool>()};
    }
    if (type == "string") {
        return {value.get<std::string>()};
    }
    if (type == "integer") {
        return {integerOf(value)};
    }
    if (type == "real") {
        return {plist::Real{realOf(value), data.value("single", false)}};
    }
    if (type == "date") {
        return {dateOf(data)};
    }
    if (type == "data") {
        return {plist::Data{bytesOfHex(value.get<std::string>())}};
    }
    if (type == "uid") {
        return {plist::Uid{integerOf(value).bits}};
    }
    if (type == "array") {
        return {arrayOf(value, depth + 1)};
    }
    if (type == "dictionary") {
        return {dictionaryOf(value, depth + 1)};
    }
    throw std::invalid_argument("'" + type + "' is not a type of values");
}

}  // namespace

TypedValue typedValue(const plist::Value& value) {
    return std::visit(MakeData(), value.content);
}

plist::Value plistValue(const TypedValue& data) {
    return valueOf(data, 0);
}

std::string hexText(std::string_view bytes) {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        text += DIGITS[static_cast<unsigned char>(byte) >> 4U];
        text += DIGITS[static_cast<unsigned char>(byte) & 0xFU];
    }
    return text;
}

std::string bytesOfHex(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned char byte = 0;
        const std::string_view digits = text.substr(i, 2);
        const char* const end = digits.data() + digits.size();
        if (std::from_chars(digits.data(), end, byte, 16).ptr != end || digits.size() != 2) {
            throw std::invalid_argument("bytes are not in hexadecimal digits");
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace host
