#include "installer-host/look/PreferenceDomain.h"

#include <sys/stat.h>

#include <cerrno>
#include <string_view>

#include "platform/Descriptor.h"
#include "platform/PropertyList/PropertyList.h"

namespace host {

PreferenceDomain parsePreferenceDomain(std::string_view bytes) {
    PreferenceDomain domain;
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    if (!parsed.root) {
        domain.problem = parsed.reason;
    } else if (const cv::plist::Dictionary* dictionary = parsed.root->dictionary()) {
        for (const auto& [key, value] : *dictionary) {
            domain.keys.emplace(key, typedValue(value));
        }
    } else {
        domain.problem = "it holds no dictionary";
    }
    return domain;
}

PreferenceDomain readPreferenceDomain(int fd) {
    PreferenceDomain domain;
    struct stat status {};
    std::string bytes;
    int error = fstat(fd, &status) == 0 ? 0 : errno;
    const bool isFile = S_ISREG(status.st_mode);
    if (error == 0 && isFile) {
        error = cv::readAll(fd, cv::plist::MAX_FILE_SIZE, bytes);
    }
    if (error != 0 || !isFile) {
        domain.problem = error != 0 ? cv::errorText(error) : "it is not a file";
        return domain;
    }
    return parsePreferenceDomain(bytes);
}

}  // namespace host
