#include "CvBase/common/string/common_string_decimal_point.h"

#include <CoreFoundation/CoreFoundation.h>

#include <array>

#include "CvBase/Mac/CFReference.h"

char g_chDecimalPoint = '.';

namespace {

char readDecimalPoint() {
    std::array<char, 50> separator{};
    const cv::CFReference locale(CFLocaleCopyCurrent());
    const CFTypeRef value = CFLocaleGetValue(locale.get(), kCFLocaleDecimalSeparator);
    const bool isAscii = value != nullptr && CFStringGetCString(static_cast<CFStringRef>(value), separator.data(),
                                                                CFIndex{separator.size()}, kCFStringEncodingASCII);
    return isAscii && separator[0] != '\0' ? separator[0] : '.';
}

[[maybe_unused]] const bool DECIMAL_POINT_IS_READ = (g_chDecimalPoint = readDecimalPoint(), true);

}  // namespace
