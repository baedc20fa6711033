#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace fuzz {

/// A path folded by the rules in common_path.h, written another way than there: by erasing from the text and from the
/// list of components. What follows a NUL byte is dropped.
inline std::string foldedPath(const std::string& path) {
    std::string text = path.c_str();
    std::replace(text.begin(), text.end(), '\\', '/');
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    for (std::size_t at = text.substr(0, 2) == "//" ? 2 : 0; (at = text.find("//", at)) != std::string::npos;) {
        text.erase(at, 1);
    }
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == '/') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    for (std::size_t i = 0; i < parts.size();) {
        if (parts[i] == ".." && i != 0) {
            const auto at = parts.begin() + static_cast<std::ptrdiff_t>(i);
            parts.erase(at - 1, at + 1);
        } else {
            ++i;
        }
    }
    std::string joined;
    for (const std::string& part : parts) {
        joined += (&part == parts.data() ? "" : "/") + part;
    }
    joined += '/';
    while (joined.size() > 1 && joined[joined.size() - 2] == '/') {
        joined.pop_back();
    }
    return joined;
}

}  // namespace fuzz
