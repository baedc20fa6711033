#include "CvBase/common/common_std.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

String StringFrom(std::string_view text) {
    if (text.size() > std::numeric_limits<unsigned int>::max()) {
        throw std::length_error("StringFrom: a String has less than 4 GiB");
    }
    String result("");
    // String's constructors end at a NUL byte, so the pieces between these are taken one by one.
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\0', start), text.size());
        result += String(text.data() + start, static_cast<unsigned int>(end - start));
        if (end < text.size()) {
            result += '\0';
        }
        start = end + 1;
    }
    return result;
}
