#include "installer-host/look/FinderObject.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include <array>
#include <cerrno>

#include "platform/FinderAttribute.h"

namespace host {

namespace {

FinderObject readFinderObject(const RootFolder& root, const std::string& path) {
    FinderObject object;
    object.path = path;
    const cv::Descriptor file = root.open(path, O_PATH);
    object.exists = file.isOpen();
    if (!object.exists) {
        object.problem = errno == ENOENT || errno == ENOTDIR ? "" : cv::errorText(errno);
        return object;
    }
    std::array<char, cv::FINDER_INFO_SIZE + 1> info{};
    // A descriptor that only names the object gives its attributes through /proc alone.
    const std::string self = "/proc/self/fd/" + std::to_string(file.get());
    const ssize_t size = getxattr(self.c_str(), cv::FINDER_INFO_ATTRIBUTE, info.data(), info.size());
    if (size >= 0 || errno == ERANGE) {
        const std::string value(info.data(), size < 0 ? info.size() : static_cast<std::size_t>(size));
        return finderObject(path, &value);
    }
    if (errno != ENODATA) {
        object.problem = cv::errorText(errno);
    }
    return object;
}

}  // namespace

FinderObject finderObject(const std::string& path, const std::string* attribute) {
    FinderObject object;
    object.path = path;
    object.exists = true;
    if (attribute != nullptr && attribute->size() == cv::FINDER_INFO_SIZE) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>((*attribute)[i]); };
        object.flags =
            static_cast<std::uint16_t>(byte(cv::FINDER_FLAGS_OFFSET) << 8U | byte(cv::FINDER_FLAGS_OFFSET + 1));
    } else if (attribute != nullptr) {
        object.problem = cv::FINDER_INFO_HAS_WRONG_SIZE;
    }
    return object;
}

std::vector<FinderObject> readFinderObjects(const RootFolder& root) {
    std::vector<FinderObject> objects;
    for (const char* path : FINDER_OBJECTS) {
        objects.push_back(readFinderObject(root, path));
    }
    return objects;
}

}  // namespace host
