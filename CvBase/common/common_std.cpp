#include "CvBase/common/common_std.h"

#include <algorithm>
#include <stdexcept>

#include "CvBase/common/common_cast.h"

String StringFrom(std::string_view text) {
    if (!in_range<unsigned int>(text.size())) {
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
