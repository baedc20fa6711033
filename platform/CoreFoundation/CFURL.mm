#include <Carbon/Files.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/TextConversion.h"
#include "platform/CoreFoundation/UnitString.h"

// The path's bytes are escaped here and taken out again here: NSURL's own path methods treat bytes that are no text,
// and characters that mean something in a URL, otherwise.

namespace {

constexpr std::string_view SCHEME = "file://";
constexpr std::string_view HOST = "localhost";

bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x80 && (std::isalnum(byte) != 0 || std::strchr("/-._~", byte) != nullptr);
}

std::string escaped(std::string_view path) {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string result;
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (isPlain(character)) {
            result += character;
        } else {
            result += {'%', DIGITS[byte >> 4], DIGITS[byte & 15]};
        }
    }
    return result;
}

std::string unescaped(std::string_view text) {
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            path += static_cast<char>(std::strtol(std::string(text.substr(i + 1, 2)).c_str(), nullptr, 16));
            i += 2;
        } else {
            path += text[i];
        }
    }
    return path;
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

/// `path` made absolute with the working folder; nothing when that cannot be found.
std::optional<std::string> absolute(std::string_view path) {
    if (path.front() == '/') {
        return std::string(path);
    }
    const std::unique_ptr<char, decltype(&std::free)> folder(getcwd(nullptr, 0), &std::free);
    if (folder == nullptr) {
        return std::nullopt;
    }
    return std::string(folder.get()) + "/" + std::string(path);
}

CFURLRef newURL(std::string_view path, bool isDirectory) {
    if (path.empty() || path.find('\0') != std::string_view::npos) {
        return nullptr;
    }
    std::optional<std::string> target = absolute(path);
    if (!target) {
        return nullptr;
    }
    *target = withoutTrailingSlashes(std::move(*target));
    if (isDirectory && target->back() != '/') {
        *target += '/';
    }
    return cv::guarded<CFURLRef>(nullptr, [&] {
        const std::string text = std::string(SCHEME).append(HOST) + escaped(*target);
        return cv::reference<CFURLRef>([[NSURL alloc] initWithString:[NSString stringWithUTF8String:text.c_str()]]);
    });
}

/// The path of `url`, without a trailing slash; empty when it is no file URL.
std::string pathOf(CFURLRef url) {
    return cv::guarded<std::string>("", [=] {
        const char* characters = [[cv::object<NSURL*>(url) absoluteString] UTF8String];
        const std::string_view text = characters != nullptr ? characters : "";
        const std::size_t start = text.find('/', SCHEME.size());
        return text.substr(0, SCHEME.size()) == SCHEME && start != std::string_view::npos
                   ? withoutTrailingSlashes(unescaped(text.substr(start)))
                   : std::string();
    });
}

}  // namespace

CFTypeID CFURLGetTypeID() {
    return cv::typeID([NSURL class]);
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef path, CFURLPathStyle style, Boolean isDirectory) {
    if (path == nullptr || style != kCFURLPOSIXPathStyle) {
        return nullptr;
    }
    const std::u16string units = cv::unitsOf(cv::object<NSString*>(path));
    std::string bytes(units.size() * 3, '\0');
    const auto count = cv::encodeText(units, kCFStringEncodingUTF8, bytes.data(), bytes.size());
    return count ? newURL(std::string_view(bytes).substr(0, *count), isDirectory) : nullptr;
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex byteCount,
                                                 Boolean isDirectory) {
    if (path == nullptr || byteCount < 0) {
        return nullptr;
    }
    return newURL({reinterpret_cast<const char*>(path), static_cast<std::size_t>(byteCount)}, isDirectory);
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean, UInt8* buffer, CFIndex bufferSize) {
    const std::string path = pathOf(url);
    if (path.empty() || bufferSize < 0 || path.size() >= static_cast<std::size_t>(bufferSize)) {
        return false;
    }
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return true;
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* ref) {
    const std::string path = pathOf(url);
    return !path.empty() && FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), ref, nullptr) == noErr;
}
