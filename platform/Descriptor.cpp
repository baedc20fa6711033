#include "platform/Descriptor.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace cv {

Descriptor::~Descriptor() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
}

int readAll(int fd, std::size_t limit, std::string& bytes) {
    std::array<char, 65536> buffer;
    bytes.clear();
    while (bytes.size() <= limit) {
        const ssize_t count = read(fd, buffer.data(), std::min(buffer.size(), limit + 1 - bytes.size()));
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        if (count == 0) {
            break;
        }
        bytes.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return 0;
}

int writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return 0;
}

std::string errorText(int error) {
    const char* text = strerrordesc_np(error);
    return text != nullptr ? text : "error " + std::to_string(error);
}

}  // namespace cv
