#include "installer-host/look/PreferenceDomain.h"

#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <string_view>
#include <utility>
#include <variant>

#include "platform/Descriptor.h"
#include "platform/Epoch.h"
#include "platform/PropertyList/PropertyList.h"

namespace host {

namespace {

using nlohmann::json;

TypedValue makeValue(const char* type, json value) {
    return {{"type", type}, {"value", std::move(value)}};
}

json realValue(double real) {
    if (std::isfinite(real)) {
        return real;
    }
    return std::isnan(real) ? "nan" : real < 0 ? "-inf" : "inf";
}

/// `seconds` since 1 January 2001 UTC in ISO 8601.
std::string dateText(double seconds) {
    constexpr double LAST_YEAR_9999 = 253402300799;
    const double unixSeconds = std::floor(seconds + cv::SECONDS_FROM_1970_TO_2001);
    if (!(std::abs(unixSeconds) <= LAST_YEAR_9999)) {
        return "out of range";
    }
    const auto time = static_cast<std::time_t>(unixSeconds);
    std::tm parts{};
    char text[40];
    gmtime_r(&time, &parts);
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
}

TypedValue valueOf(const cv::plist::Value& value);

/// What JSON data there is for each kind of value.
struct MakeValue {
    TypedValue operator()(bool flag) const { return makeValue("boolean", flag); }
    TypedValue operator()(const std::string& text) const { return makeValue("string", text); }
    TypedValue operator()(cv::plist::Integer integer) const {
        return makeValue("integer",
                         integer.isNegative ? json(static_cast<std::int64_t>(integer.bits)) : json(integer.bits));
    }
    TypedValue operator()(cv::plist::Real real) const { return makeValue("real", realValue(real.value)); }
    TypedValue operator()(cv::plist::Date date) const { return makeValue("date", dateText(date.seconds)); }
    TypedValue operator()(const cv::plist::Data& data) const { return makeValue("data", hexText(data.bytes)); }
    TypedValue operator()(cv::plist::Uid uid) const { return makeValue("uid", uid.number); }

    TypedValue operator()(const cv::plist::Array& array) const {
        json items = json::array();
        for (const cv::plist::Value& item : array) {
            items.push_back(valueOf(item));
        }
        return makeValue("array", std::move(items));
    }

    TypedValue operator()(const cv::plist::Dictionary& dictionary) const {
        json items = json::object();
        for (const auto& [key, item] : dictionary) {
            items[key] = valueOf(item);
        }
        return makeValue("dictionary", std::move(items));
    }
};

TypedValue valueOf(const cv::plist::Value& value) {
    return std::visit(MakeValue(), value.content);
}

}  // namespace

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

PreferenceDomain parsePreferenceDomain(std::string_view bytes) {
    PreferenceDomain domain;
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    if (!parsed.root) {
        domain.problem = parsed.reason;
    } else if (const cv::plist::Dictionary* dictionary = parsed.root->dictionary()) {
        for (const auto& [key, value] : *dictionary) {
            domain.keys.emplace(key, valueOf(value));
        }
    } else {
        domain.problem = "it holds no dictionary";
    }
    return domain;
}

PreferenceDomain readPreferenceDomain(int fd) {
    PreferenceDomain domain;
    struct stat status {};
    std::string bytes;
    int error = fstat(fd, &status) == 0 ? 0 : errno;
    const bool isFile = S_ISREG(status.st_mode);
    if (error == 0 && isFile) {
        error = cv::readAll(fd, cv::plist::MAX_FILE_SIZE, bytes);
    }
    if (error != 0 || !isFile) {
        domain.problem = error != 0 ? cv::errorText(error) : "it is not a file";
        return domain;
    }
    return parsePreferenceDomain(bytes);
}

}  // namespace host
