#include <Carbon/Processes.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string>

namespace {

std::string programName() {
    std::array<char, PATH_MAX> path;
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0) {
        return program_invocation_short_name;
    }
    std::string name(path.data(), static_cast<std::size_t>(length));
    name.erase(0, name.rfind('/') + 1);
    struct stat status {};
    if (stat("/proc/self/exe", &status) == 0 && status.st_nlink == 0) {
        // The kernel adds this to the name of a program whose file was removed or replaced while it runs.
        name.erase(name.rfind(" (deleted)"));
    }
    return name;
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

}  // namespace

OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info) {
    if (psn == nullptr || info == nullptr || info->processInfoLength != sizeof(ProcessInfoRec)) {
        return paramErr;
    }
    if (psn->highLongOfPSN != 0 || psn->lowLongOfPSN != kCurrentProcess) {
        return procNotFound;
    }
    const StringPtr nameBuffer = info->processName;
    *info = {};
    info->processInfoLength = sizeof(ProcessInfoRec);
    info->processName = nameBuffer;
    info->processNumber = *psn;
    if (nameBuffer != nullptr) {
        const std::string name = cutToBytes(programName(), sizeof(Str255) - 1);
        nameBuffer[0] = static_cast<unsigned char>(name.size());
        std::copy(name.begin(), name.end(), nameBuffer + 1);
    }
    return noErr;
}
