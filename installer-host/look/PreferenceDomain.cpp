#include "installer-host/look/PreferenceDomain.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <utility>
#include <variant>

#include "installer-host/report/Text.h"
#include "platform/PropertyList/PropertyList.h"

namespace host {

namespace {

using nlohmann::json;

Value makeValue(const char* type, json value) {
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
    constexpr double SECONDS_FROM_1970_TO_2001 = 978307200;
    constexpr double LAST_YEAR_9999 = 253402300799;
    const double unixSeconds = std::floor(seconds + SECONDS_FROM_1970_TO_2001);
    if (!(std::abs(unixSeconds) <= LAST_YEAR_9999)) {
        return "out of range";
    }
    const auto time = static_cast<std::time_t>(unixSeconds);
    std::tm parts{};
    char text[40];
    gmtime_r(&time, &parts);
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
}

Value valueOf(const cv::plist::Value& value);

/// What JSON data there is for each kind of value.
struct MakeValue {
    Value operator()(bool flag) const { return makeValue("boolean", flag); }
    Value operator()(const std::string& text) const { return makeValue("string", text); }
    Value operator()(cv::plist::Integer integer) const {
        return makeValue("integer",
                         integer.isNegative ? json(static_cast<std::int64_t>(integer.bits)) : json(integer.bits));
    }
    Value operator()(cv::plist::Real real) const { return makeValue("real", realValue(real.value)); }
    Value operator()(cv::plist::Date date) const { return makeValue("date", dateText(date.seconds)); }
    Value operator()(const cv::plist::Data& data) const { return makeValue("data", hexText(data.bytes)); }
    Value operator()(cv::plist::Uid uid) const { return makeValue("uid", uid.number); }

    Value operator()(const cv::plist::Array& array) const {
        json items = json::array();
        for (const cv::plist::Value& item : array) {
            items.push_back(valueOf(item));
        }
        return makeValue("array", std::move(items));
    }

    Value operator()(const cv::plist::Dictionary& dictionary) const {
        json items = json::object();
        for (const auto& [key, item] : dictionary) {
            items[key] = valueOf(item);
        }
        return makeValue("dictionary", std::move(items));
    }
};

Value valueOf(const cv::plist::Value& value) {
    return std::visit(MakeValue(), value.content);
}

/// All bytes of the file, or false with errno set.
bool readAll(int fd, std::string& bytes) {
    char buffer[65536];
    for (;;) {
        const ssize_t count = read(fd, buffer, sizeof buffer);
        if (count == 0 || bytes.size() > cv::plist::MAX_FILE_SIZE) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.append(buffer, count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

std::string describeItems(const Value& value) {
    std::string items;
    for (const auto& [key, item] : value["value"].items()) {
        items += items.empty() ? "" : ", ";
        items += value["type"] == "dictionary" ? inQuotes(key) + ": " : "";
        items += describe(item);
    }
    return items;
}

}  // namespace

PreferenceFile readPreferenceFile(int fd) {
    PreferenceFile file;
    std::string bytes;
    if (fstat(fd, &file.status) != 0 || (S_ISREG(file.status.st_mode) && !readAll(fd, bytes))) {
        file.problem = std::strerror(errno);
    } else if (!S_ISREG(file.status.st_mode)) {
        file.problem = "it is no file";
    }
    if (!file.problem.empty()) {
        return file;
    }
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    if (!parsed.root) {
        file.problem = parsed.reason;
    } else if (const cv::plist::Dictionary* dictionary = parsed.root->dictionary()) {
        for (const auto& [key, value] : *dictionary) {
            file.keys.emplace(key, valueOf(value));
        }
    } else {
        file.problem = "it holds no dictionary";
    }
    return file;
}

std::string describe(const Value& value) {
    constexpr std::size_t MOST_HEX_DIGITS = 64;
    const std::string type = value["type"];
    const json& content = value["value"];
    if (type == "string") {
        return inQuotes(content.get_ref<const std::string&>());
    }
    if (type == "data") {
        const std::string hex = content;
        return "<" + hex.substr(0, MOST_HEX_DIGITS) + (hex.size() > MOST_HEX_DIGITS ? "..." : "") + ">";
    }
    if (type == "array") {
        return "[" + describeItems(value) + "]";
    }
    if (type == "dictionary") {
        return "{" + describeItems(value) + "}";
    }
    return content.is_string() ? content.get<std::string>() : content.dump();
}

}  // namespace host
