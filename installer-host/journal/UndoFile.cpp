// Undoes what a run made of one property list.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "installer-host/journal/UndoWork.h"
#include "installer-host/look/PreferenceDomain.h"
#include "installer-host/look/QuietOpen.h"
#include "platform/Descriptor.h"
#include "platform/PropertyList/PropertyList.h"
#include "platform/Result.h"

namespace host {

namespace {

using What = UndoItem::What;
namespace plist = cv::plist;

constexpr mode_t PERMISSIONS = 07777;

/// What stands in the file's place.
struct Present {
    cv::Descriptor file;  ///< not open: nothing stands there
    std::string problem;  ///< why it is not a property list with keys, to end a sentence with; empty when it is
    struct stat status {};
    std::string bytes;
    plist::Dictionary keys;
};

std::string modeText(mode_t mode) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%04o", static_cast<unsigned>(mode & PERMISSIONS));
    return text.data();
}

std::string ownerText(uid_t owner, gid_t group) {
    return std::to_string(owner) + ":" + std::to_string(group);
}

void parseInto(Present& present) {
    plist::Parsed parsed = plist::parse(present.bytes);
    if (!parsed.root) {
        present.problem = "it is not a property list now: " + parsed.reason;
    } else if (parsed.root->dictionary() == nullptr) {
        present.problem = "it holds no dictionary now";
    } else {
        present.keys = std::move(*parsed.root->dictionary());
    }
}

/// Looks at what stands there. Throws cv::Fault.
Present presentAt(const cv::LockedFolder& folder, const std::string& name) {
    Present present;
    present.file = openQuietly(folder.descriptor(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!present.file.isOpen() && errno == ENOENT) {
        return present;
    }
    if (!present.file.isOpen() && errno == ELOOP) {
        present.problem = "a symbolic link stands in its place";
        return present;
    }
    if (!present.file.isOpen() || fstat(present.file.get(), &present.status) != 0) {
        cv::failWith(folder.pathOf(name), errno);
    }
    if (!S_ISREG(present.status.st_mode)) {
        present.problem = "something else stands in its place";
        return present;
    }
    if (const int error = cv::readAll(present.file.get(), plist::MAX_FILE_SIZE, present.bytes)) {
        cv::failWith(folder.pathOf(name), error);
    }
    parseInto(present);
    return present;
}

/// Gives `to` the extended attributes of `from` that it may have.
void copyAttributes(int from, int to) {
    std::array<char, XATTR_LIST_MAX> names;
    const ssize_t size = flistxattr(from, names.data(), names.size());
    const std::string_view all(names.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    for (std::size_t start = 0; start < all.size(); start = all.find('\0', start) + 1) {
        std::array<char, XATTR_SIZE_MAX> value;
        const char* const name = all.data() + start;
        const ssize_t length = fgetxattr(from, name, value.data(), value.size());
        if (length >= 0 && fsetxattr(to, name, value.data(), static_cast<std::size_t>(length), 0) != 0) {
            continue;  // those are the system's to give
        }
    }
}

std::map<std::string, TypedValue> dataOf(const plist::Dictionary& keys) {
    std::map<std::string, TypedValue> data;
    for (const auto& [key, value] : keys) {
        data.emplace(key, typedValue(value));
    }
    return data;
}

/// The file as a whole, as the run left it and as it was.
UndoItem wholeFile(const FileEdit& edit) {
    const auto told = [](const std::optional<Entry>& entry) { return entry ? TypedValue("file") : TypedValue(); };
    return {What::File, edit.path, "", told(edit.after), told(edit.before), "", false};
}

class FileUndo {
public:
    FileUndo(UndoWork& work, const FileEdit& edit, cv::LockedFolder folder)
        : work_(work), edit_(edit), name_(nameOf(edit.path)), folder_(std::move(folder)) {}

    void run() {
        if (!work_.result.dryRun) {
            folder_.removeLeftovers();
        }
        present_ = presentAt(folder_, name_);
        if (!present_.file.isOpen() && present_.problem.empty()) {
            undoMissing();
        } else if (!present_.problem.empty() && !isAsBefore()) {
            leave(present_.problem);
        } else if (!edit_.after) {
            undoRemoved();
        } else {
            undoPresent();
        }
    }

private:
    UndoItem item(What what, const std::string& name, TypedValue from, TypedValue to) const {
        return {what, edit_.path, name, std::move(from), std::move(to), "", false};
    }

    bool isAsBefore() const { return S_ISREG(present_.status.st_mode) && edit_.before && present_.bytes == oldBytes(); }

    void leave(const std::string& reason) { work_.leave(wholeFile(edit_), reason); }

    const std::string& oldBytes() const { return *detailsOf(*edit_.before).propertyList; }

    /// Nothing stands there.
    void undoMissing() {
        if (!edit_.before) {
            return;
        }
        if (edit_.after) {
            leave("it was removed since");
            return;
        }
        wantedMode_ = edit_.before->status.mode;
        wantedOwner_ = edit_.before->status.owner;
        wantedGroup_ = edit_.before->status.group;
        write(oldBytes());
        work_.restore(wholeFile(edit_));
    }

    /// A property list stands where the run removed one.
    void undoRemoved() {
        if (present_.bytes != oldBytes()) {
            leave("another one was put in its place since");
        }
    }

    void undoPresent() {
        wantedMode_ = present_.status.st_mode;
        wantedOwner_ = present_.status.st_uid;
        wantedGroup_ = present_.status.st_gid;
        for (const KeyEdit& key : edit_.keys) {
            undoKey(key);
        }
        if (!edit_.before && present_.keys.empty()) {
            removeFile();
            return;
        }
        undoMode();
        undoOwner();
        putContents();
        for (UndoItem& done : done_) {
            work_.restore(std::move(done));
        }
    }

    void undoKey(const KeyEdit& key) {
        const auto found = present_.keys.find(key.key);
        const TypedValue now = found == present_.keys.end() ? TypedValue() : typedValue(found->second);
        if (now == key.before) {
            return;
        }
        const UndoItem change = item(What::Key, key.key, key.after, key.before);
        if (now != key.after) {
            work_.leave(change, now.is_null() ? "it was removed since" : "it was changed since");
            return;
        }
        if (key.before.is_null()) {
            present_.keys.erase(found);
        } else {
            present_.keys.insert_or_assign(key.key, plistValue(key.before));
        }
        done_.push_back(change);
    }

    void undoMode() {
        if (!edit_.before || edit_.before->status.mode == edit_.after->status.mode) {
            return;
        }
        const mode_t before = edit_.before->status.mode & PERMISSIONS;
        const mode_t after = edit_.after->status.mode & PERMISSIONS;
        const mode_t now = present_.status.st_mode & PERMISSIONS;
        const UndoItem change = item(What::Mode, "", modeText(after), modeText(before));
        if (now == after) {
            wantedMode_ = before;
            done_.push_back(change);
        } else if (now != before) {
            work_.leave(change, "it was changed since");
        }
    }

    void undoOwner() {
        if (!edit_.before) {
            return;
        }
        const Status& before = edit_.before->status;
        const Status& after = edit_.after->status;
        const std::string was = ownerText(before.owner, before.group);
        const std::string left = ownerText(after.owner, after.group);
        const std::string now = ownerText(present_.status.st_uid, present_.status.st_gid);
        const UndoItem change = item(What::Owner, "", left, was);
        if (was == left || now == was) {
            return;
        }
        if (now == left) {
            wantedOwner_ = before.owner;
            wantedGroup_ = before.group;
            done_.push_back(change);
        } else {
            work_.leave(change, "it was changed since");
        }
    }

    void removeFile() {
        if (!work_.result.dryRun) {
            folder_.remove(name_);
        }
        work_.gone.insert(edit_.path);
        for (UndoItem& done : done_) {
            work_.restore(std::move(done));
        }
        work_.restore(wholeFile(edit_));
    }

    /// The bytes that the file is to have: those of before the run where the keys are those of before, so that the form
    /// of the file comes back, too.
    std::string wantedBytes() const {
        if (edit_.before) {
            ValueBudget ofOneFile;
            const PreferenceDomain old = parsePreferenceDomain(edit_.path, oldBytes(), ofOneFile);
            if (old.problem.empty() ? old.keys == dataOf(present_.keys) : present_.keys.empty()) {
                return oldBytes();
            }
        }
        const bool hasKeys =
            std::any_of(done_.begin(), done_.end(), [](const UndoItem& one) { return one.what == What::Key; });
        return hasKeys ? binaryOf(present_.keys) : present_.bytes;
    }

    std::string binaryOf(const plist::Dictionary& keys) const {
        try {
            return plist::toBinary(plist::Value{keys});
        } catch (const std::logic_error& error) {
            throw cv::Fault{edit_.path, error.what()};
        }
    }

    void putContents() {
        const std::string wanted = wantedBytes();
        const bool isSameBytes = wanted == present_.bytes;
        if (!isSameBytes && done_.empty()) {
            const auto bytes = [](const std::string& text) { return std::to_string(text.size()) + " bytes"; };
            done_.push_back(item(What::Contents, "", bytes(present_.bytes), bytes(wanted)));
        }
        if (!isSameBytes) {
            write(wanted);
        } else if (!done_.empty() && !work_.result.dryRun) {
            giveOwnerAndMode(present_.file.get());
            if (fsync(present_.file.get()) != 0) {
                cv::failWith(edit_.path, errno);
            }
        }
    }

    void write(const std::string& bytes) {
        if (work_.result.dryRun) {
            return;
        }
        folder_.replace(name_, bytes, [&](int fd) {
            if (present_.file.isOpen()) {
                copyAttributes(present_.file.get(), fd);
            }
            giveOwnerAndMode(fd);
            if (edit_.before && bytes == oldBytes()) {
                giveTime(fd, edit_.before->status.modified);
            }
        });
    }

    /// The owner first: a new owner takes bits of the mode away.
    void giveOwnerAndMode(int fd) const {
        struct stat status {};
        if (fstat(fd, &status) != 0) {
            cv::failWith(edit_.path, errno);
        }
        const bool hasOwner = status.st_uid == wantedOwner_ && status.st_gid == wantedGroup_;
        if ((!hasOwner && fchown(fd, wantedOwner_, wantedGroup_) != 0) || fchmod(fd, wantedMode_ & PERMISSIONS) != 0) {
            cv::failWith(edit_.path, errno);
        }
    }

    static void giveTime(int fd, DiskTime modified) {
        timespec times[2]{};
        times[0].tv_nsec = UTIME_OMIT;
        times[1].tv_sec = static_cast<time_t>(modified.seconds);
        times[1].tv_nsec = static_cast<long>(modified.nanoseconds);
        futimens(fd, times);  // a file is as good without
    }

    UndoWork& work_;
    const FileEdit& edit_;
    std::string name_;
    cv::LockedFolder folder_;
    Present present_;
    std::vector<UndoItem> done_;  ///< what the new file puts back
    mode_t wantedMode_ = 0;
    uid_t wantedOwner_ = 0;
    gid_t wantedGroup_ = 0;
};

}  // namespace

void undoFile(UndoWork& work, const FileEdit& edit) {
    work.endIfInterrupted();
    bool isMissing = false;
    try {
        FileUndo(work, edit, lockFolderOf(work, edit.path, &isMissing)).run();
    } catch (const cv::Fault& fault) {
        if (!isMissing) {
            work.leave(wholeFile(edit), fault.reason, true);
        } else if (edit.before) {
            work.leave(wholeFile(edit), "its folder is gone");
        }
    }
}

}  // namespace host
