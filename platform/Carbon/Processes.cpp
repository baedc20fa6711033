#include <Carbon/Processes.h>
#include <sys/stat.h>
#include <unicode/ustring.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Carbon/Errors.h"

namespace {

constexpr const char* OWN_PROGRAM = "/proc/self/exe";

/// What the kernel adds to the path of a program whose file was removed or replaced while it runs.
constexpr std::string_view REMOVED = " (deleted)";

bool isOwnProgram(const std::string& path) {
    struct stat own {
    }, other{};
    return stat(OWN_PROGRAM, &own) == 0 && stat(path.c_str(), &other) == 0 && own.st_dev == other.st_dev &&
           own.st_ino == other.st_ino;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string programName() {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = readlink(OWN_PROGRAM, buffer.data(), buffer.size());
    if (length <= 0) {
        return program_invocation_short_name;
    }
    std::string path(buffer.data(), static_cast<std::size_t>(length));
    if (endsWith(path, REMOVED) && !isOwnProgram(path)) {
        path.erase(path.size() - REMOVED.size());
    }
    return path.substr(path.rfind('/') + 1);
}

bool isUTF8(const std::string& text) {
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, nullptr, text.data(), static_cast<std::int32_t>(text.size()), &status);
    return status != U_INVALID_CHAR_FOUND;
}

/// The longest beginning of `text` that has at most `limit` bytes and ends between two characters.
std::string cutToBytes(const std::string& text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    const auto isContinuation = [&](std::size_t index) { return (text[index] & 0xC0) == 0x80; };
    while (limit > 0 && isContinuation(limit)) {
        --limit;
    }
    return text.substr(0, limit);
}

/// The program's name as a process name: UTF-8, or nothing, that fits.
std::string shownName() {
    const std::string name = programName();
    return isUTF8(name) ? cutToBytes(name, sizeof(Str255) - 1) : std::string();
}

}  // namespace

OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info) {
    if (psn == nullptr || info == nullptr || info->processInfoLength != sizeof(ProcessInfoRec)) {
        return paramErr;
    }
    if (psn->highLongOfPSN != 0 || psn->lowLongOfPSN != kCurrentProcess) {
        return procNotFound;
    }
    return cv::orMemoryError([&] {
        const std::string name = shownName();
        const StringPtr nameBuffer = info->processName;
        *info = {};
        info->processInfoLength = sizeof(ProcessInfoRec);
        info->processName = nameBuffer;
        info->processNumber = *psn;
        if (nameBuffer != nullptr) {
            nameBuffer[0] = static_cast<unsigned char>(name.size());
            std::copy(name.begin(), name.end(), nameBuffer + 1);
        }
        return noErr;
    });
}
