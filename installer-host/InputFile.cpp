#include "installer-host/InputFile.h"

#include <fcntl.h>

#include <cerrno>
#include <cstddef>

#include "installer-host/ExitStatus.h"
#include "platform/Descriptor.h"

namespace host {

std::string readInput(const std::string& path, const std::string& what) {
    constexpr std::size_t MOST_BYTES = std::size_t{1} << 28U;
    const cv::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string bytes;
    const int error = file.isOpen() ? cv::readAll(file.get(), MOST_BYTES, bytes) : errno;
    if (error != 0 || bytes.size() > MOST_BYTES) {
        throw Failure(ExitStatus::RootNotMade, "the " + what + " '" + path + "' cannot be read: " +
                                                   (error != 0 ? cv::errorText(error) : "it is larger than 256 MiB"));
    }
    return bytes;
}

}  // namespace host
