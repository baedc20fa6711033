#include "installer-host/look/EntryDetails.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string_view>
#include <utility>

#include "installer-host/look/QuietOpen.h"
#include "platform/Descriptor.h"
#include "platform/PropertyList/PropertyList.h"

namespace host {

namespace {

constexpr std::string_view SUFFIX = ".plist";

/// The bytes of property lists that are held at once: a root full of huge ones must not take the machine's memory.
constexpr std::size_t MOST_BYTES_KEPT = 256U << 20;

/// The most that the system gives of a list of attributes, and of one value.
constexpr std::size_t MOST_OF_ATTRIBUTE = 65536;

void note(Entry& entry, const std::string& problem) {
    if (entry.problem.empty()) {
        entry.problem = problem;
    }
}

void readAttribute(Entry& entry, const std::string& name, const std::string& attribute, Details& details) {
    std::array<char, MOST_OF_ATTRIBUTE> value;
    const ssize_t size = lgetxattr(name.c_str(), attribute.c_str(), value.data(), value.size());
    if (size >= 0) {
        details.attributes[attribute].assign(value.data(), static_cast<std::size_t>(size));
    } else if (errno != ENODATA) {
        note(entry, "its attribute " + attribute + ": " + cv::errorText(errno));
    }
}

void readAttributes(Entry& entry, const std::string& name, Details& details) {
    std::array<char, MOST_OF_ATTRIBUTE> names;
    const ssize_t size = llistxattr(name.c_str(), names.data(), names.size());
    if (size < 0 && errno != ENOTSUP) {
        note(entry, "its attributes: " + cv::errorText(errno));
    }
    std::string_view rest(names.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    while (!rest.empty()) {
        const std::string attribute(rest.substr(0, rest.find('\0')));
        rest.remove_prefix(attribute.size() + 1);
        readAttribute(entry, name, attribute, details);
    }
}

void readTarget(Entry& entry, const std::string& name, Details& details) {
    std::array<char, PATH_MAX> target;
    const ssize_t size = readlink(name.c_str(), target.data(), target.size());
    if (size < 0) {
        note(entry, cv::errorText(errno));
    } else {
        details.target.assign(target.data(), static_cast<std::size_t>(size));
    }
}

}  // namespace

bool isPropertyList(const Entry& entry) {
    const std::string& name = entry.name;
    return S_ISREG(entry.status.mode) && name.size() > SUFFIX.size() &&
           strcasecmp(name.c_str() + name.size() - SUFFIX.size(), SUFFIX.data()) == 0;
}

void DetailsReader::readPropertyList(const Entry& entry, const std::string& name, Details& details) {
    const std::uint64_t size = entry.status.size;
    if (size > cv::plist::MAX_FILE_SIZE || size > MOST_BYTES_KEPT - bytesKept_) {
        details.propertyListProblem = "it is too large";
        return;
    }
    const cv::Descriptor file = openQuietly(AT_FDCWD, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    struct stat status {};
    std::string bytes;
    int error = file.isOpen() && fstat(file.get(), &status) == 0 ? 0 : errno;
    if (error == 0 && (!S_ISREG(status.st_mode) || status.st_ino != entry.status.identity.inode)) {
        error = ESTALE;
    }
    if (error == 0) {
        error = cv::readAll(file.get(), static_cast<std::size_t>(size), bytes);
    }
    if (error != 0) {
        details.propertyListProblem = cv::errorText(error);
        return;
    }
    bytesKept_ += bytes.size();
    details.propertyList = std::move(bytes);
}

void DetailsReader::complete(Entry& entry, const std::string& name) {
    Details details;
    readAttributes(entry, name, details);
    if (S_ISLNK(entry.status.mode)) {
        readTarget(entry, name, details);
    } else if (isPropertyList(entry)) {
        readPropertyList(entry, name, details);
    } else if (details.attributes.empty()) {
        return;
    }
    entry.details = std::make_shared<const Details>(std::move(details));
}

}  // namespace host
