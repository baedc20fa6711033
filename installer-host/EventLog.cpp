#include "installer-host/EventLog.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <thread>
#include <utility>

#include "installer-host/ExitStatus.h"
#include "installer-host/Message.h"
#include "installer-host/report/Text.h"
#include "installer-host/terminal/Screen.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// "2026-11-22T06:10:05.123Z"
std::string timeNow() {
    timespec now{};
    std::tm parts{};
    std::array<char, 32> text{};
    std::array<char, 8> fraction{};
    clock_gettime(CLOCK_REALTIME, &now);
    gmtime_r(&now.tv_sec, &parts);
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(fraction.data(), fraction.size(), ".%03ldZ", static_cast<long>(now.tv_nsec / 1000000 % 1000));
    return std::string(text.data(), length) + fraction.data();
}

std::string randomNumber() {
    std::uint64_t number = 0;
    std::array<char, 20> text{};
    if (getrandom(&number, sizeof number, 0) != static_cast<ssize_t>(sizeof number)) {
        number = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(number));
    return text.data();
}

/// Locks the file, or unlocks it. The lock is this process's own, not shared with its copies as that of flock() is.
bool setLock(int file, short kind) {
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    return fcntl(file, F_SETLK, &lock) == 0;
}

/// Keeps the other programs that write to the file out while it lives: not every file system adds a long line whole.
class FileLock {
public:
    explicit FileLock(int file) : file_(file) {
        // Not without end: somebody who keeps the lock must not keep the run.
        constexpr int TRIES = 200;
        for (int i = 0; i < TRIES && !isHeld_; ++i) {
            isHeld_ = setLock(file, F_WRLCK);
            if (!isHeld_) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        }
    }
    ~FileLock() {
        if (isHeld_) {
            setLock(file_, F_UNLCK);
        }
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    bool isHeld() const { return isHeld_; }

private:
    int file_;
    bool isHeld_ = false;
};

/// Used under the lock of the screen, which is free in every copy of this process.
struct Log {
    std::string path, run;
    cv::Descriptor file;
};

Log& theLog() {
    static Log log;
    return log;
}

/// Adds a whole line or nothing. Returns 0 or the errno value.
int append(int file, const std::string& line) {
    const FileLock lock(file);
    struct stat before {};
    if (!lock.isHeld()) {
        return EWOULDBLOCK;
    }
    if (fstat(file, &before) != 0) {
        return errno;
    }
    const int error = cv::writeAll(file, line);
    if (error != 0) {
        static_cast<void>(!ftruncate(file, before.st_size));
    }
    return error;
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Failure(ExitStatus::RootNotMade, "the log '" + path + "' cannot be written: " + reason);
}

}  // namespace

void openLog(const std::string& path) {
    constexpr mode_t MODE = 0644;
    cv::Descriptor file(
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, MODE));
    if (!file.isOpen()) {
        refuse(path, errno == ELOOP ? "it is a symbolic link" : cv::errorText(errno));
    }
    struct stat status {};
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        refuse(path, "it is not a file");
    }
    if (status.st_nlink > 1) {
        refuse(path, "the file has another name, too");
    }
    const std::lock_guard lock(Screen::instance().mutex);
    theLog() = {path, randomNumber(), std::move(file)};
}

void logEvent(std::string_view kind, std::string_view what) {
    const std::lock_guard lock(Screen::instance().mutex);
    Log& log = theLog();
    if (!log.file.isOpen()) {
        return;
    }
    const std::string line = timeNow() + " " + log.run + " " + std::string(kind) + " " + escaped(what) + "\n";
    if (const int error = append(log.file.get(), line); error != 0) {
        log.file = cv::Descriptor();
        Screen::instance().writeText("installer-host: the log '" + printable(log.path) +
                                     "' cannot be written any more: " + cv::errorText(error) + "\n");
    }
}

}  // namespace host
