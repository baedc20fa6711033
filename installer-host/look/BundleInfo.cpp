#include "installer-host/look/BundleInfo.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "installer-host/look/QuietOpen.h"
#include "platform/Descriptor.h"
#include "platform/PropertyList/PropertyList.h"

namespace host {

namespace {

std::string textOf(const cv::plist::Dictionary& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    const std::string* text = found == dictionary.end() ? nullptr : found->second.text();
    return text == nullptr ? "" : *text;
}

}  // namespace

BundleInfo readBundleInfo(const std::string& path) {
    const cv::Descriptor file = openQuietly(AT_FDCWD, path + "/Contents/Info.plist", O_RDONLY | O_NONBLOCK);
    struct stat status {};
    std::string bytes;
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        cv::readAll(file.get(), cv::plist::MAX_FILE_SIZE, bytes) != 0) {
        return {};
    }
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    const cv::plist::Dictionary* dictionary = parsed.root ? parsed.root->dictionary() : nullptr;
    if (dictionary == nullptr) {
        return {};
    }
    const std::string version = textOf(*dictionary, "CFBundleShortVersionString");
    return {textOf(*dictionary, "CFBundleIdentifier"),
            version.empty() ? textOf(*dictionary, "CFBundleVersion") : version};
}

}  // namespace host
