// Prints the decimal separator of the user's locale in UTF-8, asked for while the program's static objects are made.

#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <string>

namespace {

std::string decimalSeparator() {
    const CFLocaleRef locale = CFLocaleCopyCurrent();
    const CFTypeRef value = CFLocaleGetValue(locale, kCFLocaleDecimalSeparator);
    char text[50] = "none";
    if (value != nullptr) {
        CFStringGetCString(static_cast<CFStringRef>(value), text, sizeof text, kCFStringEncodingUTF8);
    }
    CFRelease(locale);
    return text;
}

const std::string SEPARATOR = decimalSeparator();

}  // namespace

int main() {
    std::puts(SEPARATOR.c_str());
}
