#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace cv {

/// An open file or folder, closed at the end of the scope.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }

    /// Gives the descriptor up to the caller, who closes it.
    int release() noexcept { return std::exchange(fd_, -1); }

private:
    int fd_;
};

/// Reads the open file from where it stands to its end, or to one byte more than `limit`. Returns 0 or the errno value.
int readAll(int fd, std::size_t limit, std::string& bytes);

/// Writes all of `bytes`. Returns 0 or the errno value.
int writeAll(int fd, std::string_view bytes);

/// What an errno value means, in the words of the C locale.
std::string errorText(int error);

}  // namespace cv
