#pragma once

#include <unistd.h>

#include <utility>

namespace host {

/// Owns an open file descriptor; -1 is none.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }

    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }

    /// Gives the descriptor to the caller, who closes it.
    int release() { return std::exchange(fd_, -1); }

    void reset(int fd = -1) {
        if (fd_ >= 0 && fd_ != fd) {
            close(fd_);
        }
        fd_ = fd;
    }

private:
    int fd_;
};

}  // namespace host
