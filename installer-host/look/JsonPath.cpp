#include "installer-host/look/JsonPath.h"

#include <string_view>

#include "installer-host/look/TypedValue.h"
#include "platform/PropertyList/Utf.h"

namespace host {

namespace {

constexpr const char* BYTES = "Bytes";

bool isUtf8(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        if (cv::plist::nextCharacter(text, position) == cv::plist::NO_CHARACTER) {
            return false;
        }
    }
    return true;
}

}  // namespace

void addPath(nlohmann::ordered_json& object, const std::string& key, const std::string& path) {
    object[key] = path;
    if (!isUtf8(path)) {
        object[key + BYTES] = hexText(path);
    }
}

std::string pathIn(const nlohmann::ordered_json& object, const std::string& key) {
    const auto bytes = object.find(key + BYTES);
    return bytes == object.end() ? object.at(key).get<std::string>() : bytesOfHex(bytes->get<std::string>());
}

}  // namespace host
