#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "CvBase/Mac/CFReference.h"
#include "CvBase/Util/CFString.h"
#include "CvBase/Util/Exception/FileIO.h"
#include "CvBase/Util/File.h"
#include "CvBase/common/common_checked_types.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"
#include "plugin/Catalogue.h"
#include "plugin/InstallStatusFile.h"
#include "plugin/StepSupport.h"
#include "plugin/Steps.h"

namespace {

/// The values of the updater's "UpdateInterval".
enum UpdateInterval : SInt32 { UpdatesOff = 0, UpdatesOn = 2 };

/// The size of an open file that is to be read into one block; an unknown size counts as 0. Throws std::bad_alloc for a
/// file that, with one byte more, does not fit the 4 GiB of a 32-bit process, or a vector of this one.
unsigned int readableSize(const Util::File& file) {
    const checked_value<unsigned long long> size = file.Size();
    if (size.Value() >= std::min<unsigned long long>(0xFFFFFFFF, std::vector<char>().max_size())) {
        throw std::bad_alloc();
    }
    return static_cast<unsigned int>(size.Value());
}

/// What the install-status file says; unset when there is no such file. Throws Util::Exception::FileIO when it is there
/// but cannot be read.
checked_value<UpdateInterval> readUpdateInterval() {
    Util::File file(FilePath(INSTALL_STATUS_FILE, false));
    if (!file.Exists()) {
        return checked_value<UpdateInterval>();
    }
    file.Open(Util::File::Read);
    std::vector<char> buffer(std::size_t{readableSize(file)} + 1);
    const unsigned int size = readableSize(file);
    if (buffer.size() <= size) {  // it has grown since
        buffer.resize(std::size_t{size} + 1);
    }
    file.ReadBlock(buffer.data(), size);
    buffer.back() = '\0';
    file.Close();
    return String(buffer.data()).Left(sizeof UPDATES_ENABLED - 1) == UPDATES_ENABLED ? UpdatesOn : UpdatesOff;
}

void storeUpdateInterval(UpdateInterval interval) {
    const SInt32 value = interval;
    {
        const cv::CFReference number(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value));
        setMachinePreference(CFSTR("UpdateInterval"), number.get(), updaterDomain());
    }
    synchronizeMachinePreferences(updaterDomain());
}

void storeInstallStatus(const String& message) {
    {
        const Util::CFString text(message, Util::CFString::ReleaseOnDestroy);
        setMachinePreference(CFSTR("InstallStatus"), text.Get(), updaterDomain());
    }
    synchronizeMachinePreferences(updaterDomain());
}

/// Updates are on unless the install-status file is there and says otherwise.
void carryUpdateChoice() {
    bool written = false;
    try {
        const checked_value<UpdateInterval> interval = readUpdateInterval();
        if (interval.IsSet()) {
            storeUpdateInterval(interval.Value());
            written = true;
        }
    } catch (const Util::Exception::FileIO& failure) {
        storeInstallStatus(failure.GetMessage());
    }
    if (!written) {
        storeUpdateInterval(UpdatesOn);
    }
}

UInt16 withFlag(UInt16 flags, UInt16 flag, bool set) {
    return static_cast<UInt16>(set ? flags | flag : flags & ~flag);
}

/// Finds the object at a POSIX path in UTF-8, following symbolic links.
bool findObject(const char* path, FSRef& ref) {
    const Util::CFString text(path, Util::CFString::ReleaseOnDestroy);
    // The directory flag says how the URL is written; the object is found all the same when it is a file.
    const cv::CFReference url(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text.Get(), kCFURLPOSIXPathStyle, true));
    return url && CFURLGetFSRef(url.get(), &ref);
}

/// Sets or clears the two Finder flags of a file or folder, leaving its other flags; true when they were stored. The
/// second argument, whether it is a folder, is not needed: the flags lie in the same place for both.
bool setHFSAttributes(const char* path, bool /*isFolder*/, bool invisible, bool customIcon) {
    FSRef ref;
    FSCatalogInfo info;
    if (!findObject(path, ref) ||
        FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr) != noErr) {
        return false;
    }
    UInt8* const place = info.finderInfo + offsetof(FileInfo, finderFlags);
    UInt16 flags;
    std::memcpy(&flags, place, sizeof flags);
    flags = withFlag(flags, kIsInvisible, invisible);
    flags = withFlag(flags, kHasCustomIcon, customIcon);
    std::memcpy(place, &flags, sizeof flags);
    return FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info) == noErr;
}

}  // namespace

void PostInstall(XCodParamBlock* block) {
    if (block == nullptr || !acceptBlockVersion(*block)) {
        return;
    }
    const CFStringRef language = languageText(block->languageCode);
    if (const Product* const product = findProduct(block->productCode)) {
        carryUpdateChoice();
        setMachinePreference(CFSTR("Lang"), language, product->domain);
        synchronizeMachinePreferences(product->domain);
    }
    setHFSAttributes("/Applications/Corvane", true, false, true);
    setHFSAttributes("/Applications/Corvane/Icon\r", false, true, false);
}
