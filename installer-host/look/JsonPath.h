#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace host {

// Names of files are bytes, and JSON has only text: a name that is not UTF-8 stands with U+FFFD under its key, and its
// bytes in hexadecimal digits under the key with "Bytes" after it.

/// Adds a path or another name to the object.
void addPath(nlohmann::ordered_json& object, const std::string& key, const std::string& path);

/// The name that addPath added. Throws std::invalid_argument, or an exception of the JSON library, when there is none.
std::string pathIn(const nlohmann::ordered_json& object, const std::string& key);

}  // namespace host
