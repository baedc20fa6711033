#include "installer-host/look/PreferenceDomain.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/Descriptor.h"
#include "platform/PropertyList/PropertyList.h"

namespace host {

namespace {

std::string damageOf(const cv::plist::Parsed& parsed) {
    return !parsed.root ? parsed.reason : parsed.root->dictionary() == nullptr ? "it holds no dictionary" : "";
}

}  // namespace

std::string damageOf(std::string_view bytes) {
    return damageOf(cv::plist::parse(bytes));
}

PreferenceDomain parsePreferenceDomain(std::string_view path, std::string_view bytes, ValueBudget& budget) {
    PreferenceDomain domain;
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    domain.problem = damageOf(parsed);
    if (!domain.problem.empty()) {
        return domain;
    }
    const cv::plist::Dictionary& keys = *parsed.root->dictionary();
    if (!budget.spend(path, keys)) {
        domain.isTooMuch = true;
        domain.problem = "it is too large";
        return domain;
    }
    for (const auto& [key, value] : keys) {
        domain.keys.emplace(key, typedValue(value));
    }
    return domain;
}

PreferenceDomain readPreferenceDomain(std::string_view path, int fd, ValueBudget& budget) {
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
    return parsePreferenceDomain(path, bytes, budget);
}

}  // namespace host
