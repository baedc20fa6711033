#include "tests/plugin/Faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <Carbon/Carbon.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace test {

Faults faults;

}  // namespace test

namespace {

bool isStatusFile(int fd) {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error).filename() ==
           "install_status.txt";
}

template <typename Function>
Function realFunction(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand in the place of the C library's and the port's functions of the same name for the code that is linked
// into this program.

extern "C" __attribute__((visibility("default"))) int fstat(int fd, struct stat* status) noexcept {
    const int result = fstatat(fd, "", status, AT_EMPTY_PATH);
    auto& sizes = test::faults.statusFileSizes;
    if (result != 0 || sizes.empty() || !isStatusFile(fd)) {
        return result;
    }
    const std::optional<long long> size = sizes.front();
    if (sizes.size() > 1) {
        sizes.erase(sizes.begin());
    }
    if (!size) {
        errno = EIO;
        return -1;
    }
    status->st_size = *size;
    return 0;
}

extern "C" __attribute__((visibility("default"))) int fclose(FILE* stream) {
    const bool fails = test::faults.closeFails && isStatusFile(fileno(stream));
    const int result = realFunction<int (*)(FILE*)>("fclose")(stream);
    if (!fails) {
        return result;
    }
    errno = EIO;
    return EOF;
}

extern "C" __attribute__((visibility("default"))) DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP filter) {
    std::fprintf(stderr, "StopAlert %d%s\n", alertID, filter == nullptr ? "" : " with a filter");
    return -1;
}
