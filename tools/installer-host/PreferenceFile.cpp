#include "tools/installer-host/PreferenceFile.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include "platform/CoreFoundation/PropertyList.h"
#include "tools/installer-host/Text.h"

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

std::string stringOf(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text == nullptr ? std::string() : std::string(text, static_cast<std::size_t>(length));
}

std::string hexOf(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes == nullptr ? std::string() : hexText({bytes, static_cast<std::size_t>(length)});
}

json integerOf(plist_t node) {
    const cv::plist::Integer integer = cv::plist::integerOf(node);
    return integer.negative ? json(static_cast<std::int64_t>(integer.bits)) : json(integer.bits);
}

/// Calls `visit` with each key and its node.
template <typename Visit>
void forEachItem(plist_t dictionary, Visit visit) {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    const std::unique_ptr<void, void (*)(void*)> owner(iterator, std::free);
    for (;;) {
        char* key = nullptr;
        plist_t node = nullptr;
        plist_dict_next_item(dictionary, iterator, &key, &node);
        const std::unique_ptr<char, void (*)(void*)> keyOwner(key, std::free);
        if (node == nullptr) {
            return;
        }
        visit(std::string(key == nullptr ? "" : key), node);
    }
}

Value valueOf(plist_t node);

json arrayOf(plist_t node) {
    json items = json::array();
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        items.push_back(valueOf(plist_array_get_item(node, i)));
    }
    return items;
}

json dictionaryOf(plist_t node) {
    json items = json::object();
    forEachItem(node, [&](const std::string& key, plist_t item) { items[key] = valueOf(item); });
    return items;
}

Value valueOf(plist_t node) {
    std::uint8_t flag = 0;
    double real = 0;
    std::uint64_t uid = 0;
    switch (plist_get_node_type(node)) {
        case PLIST_STRING:
        case PLIST_KEY:
            return makeValue("string", stringOf(node));
        case PLIST_UINT:
            return makeValue("integer", integerOf(node));
        case PLIST_REAL:
            plist_get_real_val(node, &real);
            return makeValue("real", realValue(real));
        case PLIST_BOOLEAN:
            plist_get_bool_val(node, &flag);
            return makeValue("boolean", flag != 0);
        case PLIST_DATE:
            return makeValue("date", dateText(cv::plist::dateOf(node)));
        case PLIST_DATA:
            return makeValue("data", hexOf(node));
        case PLIST_ARRAY:
            return makeValue("array", arrayOf(node));
        case PLIST_DICT:
            return makeValue("dictionary", dictionaryOf(node));
        case PLIST_UID:
            plist_get_uid_val(node, &uid);
            return makeValue("uid", uid);
        default:
            return makeValue("null", nullptr);
    }
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
    if (parsed.root == nullptr) {
        file.problem = parsed.reason;
    } else if (plist_get_node_type(parsed.root.get()) != PLIST_DICT) {
        file.problem = "it holds no dictionary";
    } else {
        forEachItem(parsed.root.get(),
                    [&](const std::string& key, plist_t node) { file.keys.emplace(key, valueOf(node)); });
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
