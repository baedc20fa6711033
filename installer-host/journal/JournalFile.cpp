#include "installer-host/journal/JournalFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "installer-host/ExitStatus.h"
#include "installer-host/JsonInput.h"
#include "platform/Result.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t MOST_BYTES = std::size_t{1} << 30;

/// Files are made for their owner alone; a journal needs no more.
void leaveAsMade(int) {}

Failure unusable(const std::string& path, const std::string& reason, const std::string& advice = "") {
    return {ExitStatus::RootNotMade, "the journal '" + path + "' " + reason, advice};
}

/// Why a user cannot trust this file; empty when he can.
std::string distrustOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) {
        return "is not a file";
    }
    if (status.st_uid != geteuid()) {
        return "belongs to another user";
    }
    return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? "can be written by other users" : "";
}

std::string readTrusted(int folder, const std::string& name, const std::string& path) {
    const cv::Descriptor file(openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        throw errno == ELOOP ? unusable(path, "is a symbolic link", "Name the file itself.")
                             : unusable(path, "cannot be read: " + cv::errorText(errno));
    }
    if (const std::string distrust = distrustOf(status); !distrust.empty()) {
        throw unusable(path, distrust,
                       "What a journal says is put back with your rights: only the file that 'run --journal' wrote for "
                       "you is used.");
    }
    std::string text;
    const int error = cv::readAll(file.get(), MOST_BYTES, text);
    if (error != 0 || text.size() > MOST_BYTES) {
        throw unusable(path, error != 0 ? "cannot be read: " + cv::errorText(error) : "is too large");
    }
    return text;
}

}  // namespace

JournalFile::JournalFile(const std::string& path, std::function<void()> perWait) : perWait_(std::move(perWait)) {
    const fs::path given(path);
    std::error_code error;
    const fs::path folder = fs::canonical(given.has_parent_path() ? given.parent_path() : fs::path("."), error);
    name_ = given.filename();
    if (error) {
        throw unusable(path, "has no folder to lie in: " + error.message());
    }
    if (name_.empty() || name_ == "." || name_ == "..") {
        throw unusable(path, "is a folder", "Name a file.");
    }
    folderPath_ = folder;
    path_ = folder / name_;
    folder_ = cv::Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder_.isOpen()) {
        throw unusable(path, "cannot be reached: " + cv::errorText(errno));
    }
}

void JournalFile::make(Journal& journal) {
    if (faccessat(folder_.get(), name_.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        throw unusable(path_, "exists already", "Each journal holds one run: give another name.");
    }
    journal.name.path = path_;
    try {
        const cv::LockedFolder locked = lockFolder();
        locked.removeLeftovers();
        locked.make(name_, journalText(journal), leaveAsMade);
        noteIdentity();
    } catch (const cv::Fault& fault) {
        throw unusable(path_, "cannot be made: " + fault.reason);
    }
}

Journal JournalFile::read() {
    const std::string text = readTrusted(folder_.get(), name_, path_);
    noteIdentity();
    try {
        Journal journal = journalFrom(text);
        journal.name.path = path_;
        return journal;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& fault) {
        throw unusable(path_, "is not a journal that can be read: " + faultText(fault),
                       "Name the file that 'run --journal' wrote.");
    }
}

void JournalFile::write(const Journal& journal) {
    const cv::LockedFolder locked = lockFolder();
    requireSame();
    locked.replace(name_, journalText(journal), leaveAsMade);
    noteIdentity();
}

void JournalFile::remove() const {
    const cv::LockedFolder locked = lockFolder();
    requireSame();
    locked.remove(name_);
}

cv::LockedFolder JournalFile::lockFolder() const {
    return {cv::Descriptor(openat(folder_.get(), ".", O_RDONLY | O_CLOEXEC)), folderPath_, perWait_};
}

void JournalFile::requireSame() const {
    struct stat status {};
    if (fstatat(folder_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        cv::failWith(path_, errno);
    }
    if (status.st_dev != identity_.st_dev || status.st_ino != identity_.st_ino) {
        throw cv::Fault{path_, "something else was put in its place"};
    }
}

void JournalFile::noteIdentity() {
    if (fstatat(folder_.get(), name_.c_str(), &identity_, AT_SYMLINK_NOFOLLOW) != 0) {
        cv::failWith(path_, errno);
    }
}

}  // namespace host
