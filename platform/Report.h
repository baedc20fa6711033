#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <utility>

namespace cv {

/// Writes one line about a fault to standard error, "WHO: TEXT": `who` is the function or the service that was called.
/// Line breaks and other control characters in the text, which may come from file names, are shown as '?'. Asks for no
/// memory: that there is none may be what is reported.
inline void report(std::string_view who, std::string_view text) noexcept {
    std::array<char, 512> line;
    std::size_t size = 0;
    const auto flush = [&] { static_cast<void>(std::fwrite(line.data(), 1, std::exchange(size, 0), stderr)); };
    flockfile(stderr);
    for (const std::string_view part : {who, std::string_view(": "), text}) {
        for (const char c : part) {
            line[size++] = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
            if (size == line.size()) {
                flush();
            }
        }
    }
    line[size++] = '\n';
    flush();
    funlockfile(stderr);
}

}  // namespace cv
