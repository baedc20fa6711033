// What a file does through the File Manager and the Finder. It throws nothing itself: File.cpp does, so that a line of
// the unit "Util/File" names one place.

#include <Carbon/Carbon.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "CvBase/Util/File.h"

namespace Util {

namespace {

constexpr OSType FINDER_SIGNATURE = 0x4D414353;  // 'MACS'

/// A descriptor of an Apple event or of a part of one, null until it is made.
class EventDescriptor {
public:
    EventDescriptor() = default;
    ~EventDescriptor() { AEDisposeDesc(&desc_); }
    EventDescriptor(const EventDescriptor&) = delete;
    EventDescriptor& operator=(const EventDescriptor&) = delete;

    AEDesc* get() { return &desc_; }

    /// Makes it hold `value`.
    OSErr set(DescType type, OSType value) { return AECreateDesc(type, &value, sizeof value, &desc_); }

private:
    AEDesc desc_ = {typeNull, nullptr};
};

bool makeReference(const String& path, OptionBits options, FSRef& ref) {
    const UInt8* text = reinterpret_cast<const UInt8*>(path.CStr());
    return FSPathMakeRefWithOptions(text, options, &ref, nullptr) == noErr;
}

/// Sends the Finder the event that moves `item` to the Trash; false when that failed.
bool sendToTrash(const FSRef& item) {
    EventDescriptor finder, event, container, property, trash, reply;
    return finder.set(typeApplSignature, FINDER_SIGNATURE) == noErr &&
           AECreateAppleEvent(kAECoreSuite, kAEMove, finder.get(), kAutoGenerateReturnID, kAnyTransactionID,
                              event.get()) == noErr &&
           AEPutParamPtr(event.get(), keyDirectObject, typeFSRef, &item, sizeof item) == noErr &&
           property.set(typeType, kTrashFolderType) == noErr &&
           CreateObjSpecifier(cObject, container.get(), formPropertyID, property.get(), false, trash.get()) == noErr &&
           AEPutParamDesc(event.get(), keyAEInsertHere, trash.get()) == noErr &&
           AESend(event.get(), reply.get(), kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr) ==
               noErr;
}

/// Exchanges the contents of two files in place. False, with nothing moved, when they are not two regular files or
/// their volume cannot do it.
bool exchange(const String& a, const String& b) {
    FSRef first, second;
    return makeReference(a, kFSPathMakeRefDefaultOptions, first) &&
           makeReference(b, kFSPathMakeRefDefaultOptions, second) && FSExchangeObjects(&first, &second) == noErr;
}

bool isOneObject(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether two paths are in one folder, however it is written.
bool areInOneFolder(const FilePath& a, const FilePath& b) {
    struct stat folderA {
    }, folderB{};
    return stat(a.GetFolder().ToString().CStr(), &folderA) == 0 &&
           stat(b.GetFolder().ToString().CStr(), &folderB) == 0 && isOneObject(folderA, folderB);
}

/// How `from` and `to` relate where both lead to one object.
enum class Names {
    OfTwoObjects,  ///< they do not
    Same,          ///< one entry of one folder
    Redundant,     ///< `to` leads to the object without `from`: `from` is a link to it, or a second name
    Dependent      ///< `to` is a link that leads through `from`, or `from` written in another case
};

/// The text of the symbolic link at `path`; empty when there is none.
std::string linkText(const std::string& path) {
    std::string text(PATH_MAX, '\0');
    const ssize_t length = readlink(path.c_str(), text.data(), text.size());
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return text;
}

/// Whether the system meets the symbolic link `link` on its way to what is at `path`. Follows the way itself, and puts
/// the text of each link in its place.
bool leadsThrough(std::string path, const struct stat& link) {
    constexpr int MAX_LINKS = 64;  // more than systems follow
    std::size_t start = 0;
    for (int links = 0; links < MAX_LINKS && start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string entry = path.substr(0, end);
        const std::string text = end > start ? linkText(entry) : "";
        struct stat status {};
        if (text.empty()) {
            start = end + 1;
            continue;
        }
        if (lstat(entry.c_str(), &status) == 0 && isOneObject(status, link)) {
            return true;
        }
        start = text.front() == '/' ? 0 : start;
        path.replace(start, end - start, text);
        ++links;
    }
    return false;
}

Names compareNames(const FilePath& from, const FilePath& to) {
    const String source = from.ToString();
    const String target = to.ToString();
    struct stat a {
    }, b{};
    if (stat(source.CStr(), &a) != 0 || stat(target.CStr(), &b) != 0 || !isOneObject(a, b)) {
        return Names::OfTwoObjects;
    }
    if (from.GetFilename() == to.GetFilename() && areInOneFolder(from, to)) {
        return Names::Same;
    }
    if (lstat(source.CStr(), &a) != 0 || lstat(target.CStr(), &b) != 0) {
        return Names::OfTwoObjects;
    }
    const bool areTwoNames = S_ISREG(a.st_mode) && S_ISREG(b.st_mode) && a.st_nlink > 1;
    const bool isUnneededLink = S_ISLNK(a.st_mode) && !leadsThrough(target.CStr(), a);
    return isUnneededLink || areTwoNames ? Names::Redundant : Names::Dependent;
}

/// Moves a symbolic link whose text is relative to its folder to another folder, with an absolute text. False, with
/// nothing changed, when `from` is not such a link, or that is not possible.
bool moveRelativeLink(const FilePath& from, const FilePath& to) {
    const String source = from.ToString();
    const String target = to.ToString();
    const std::string text = linkText(source.CStr());
    if (text.empty() || text.front() == '/' || areInOneFolder(from, to)) {
        return false;
    }
    const std::string absolute = from.GetFolder().ToString().CStr() + text;
    const std::string made = target.CStr() + ("." + std::to_string(getpid()));
    if (symlink(absolute.c_str(), made.c_str()) != 0) {
        return false;
    }
    const bool moved = std::rename(made.c_str(), target.CStr()) == 0;
    std::remove(moved ? source.CStr() : made.c_str());
    return moved;
}

}  // namespace

std::uint32_t File::GetOSXFileType() const {
    FSRef ref;
    FSCatalogInfo info;
    if (!makeReference(path_.ToString(), kFSPathMakeRefDefaultOptions, ref) ||
        FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr) != noErr) {
        return 0;
    }
    FileInfo finderInfo;
    static_assert(sizeof finderInfo == sizeof info.finderInfo);
    std::memcpy(&finderInfo, info.finderInfo, sizeof finderInfo);
    return finderInfo.fileType;
}

void File::Rename(const FilePath& from, const FilePath& to) {
    switch (compareNames(from, to)) {
        case Names::Same:
            return;
        case Names::Redundant:
            File(from).Remove(false);
            return;
        case Names::Dependent:
            if (!moveRelativeLink(from, to)) {
                renameEntry(from, to);
            }
            return;
        case Names::OfTwoObjects:
            break;
    }
    // Only after an exchange that took place is the old file what lies at `from`.
    if (File(to).Exists() && exchange(from.ToString(), to.ToString())) {
        File(from).Remove(false);
    } else {
        renameEntry(from, to);
    }
}

void File::Recycle(const String& path) {
    try {
        FSRef item;
        if (makeReference(path, kFSPathMakeRefDoNotFollowLeafSymlink, item)) {
            sendToTrash(item);
        }
    } catch (...) {  // no memory: the item stays where it is
    }
}

}  // namespace Util
