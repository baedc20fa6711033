#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace cv {

/// Writes one line about a fault to standard error, "WHO: TEXT": `who` is the function or the service that was called.
/// Line breaks and other control characters in the text, which may come from file names, are shown as '?'.
inline void report(std::string_view who, std::string_view text) {
    std::string line(who);
    line.append(": ").append(text);
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            c = '?';
        }
    }
    line += '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

}  // namespace cv
