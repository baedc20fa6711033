#include "CvBase/Util/PlatformInfo.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <unistd.h>

#include "CvBase/Mac/MessageSend.h"
#include "CvBase/Util/CFString.h"

namespace Util {
namespace {

/// The value of `key` in the main bundle's information dictionary, owned by the bundle; null when there is none.
CFTypeRef mainBundleValue(CFStringRef key) {
    const id bundle = cv::send<id>(cv::classNamed("NSBundle"), "mainBundle");
    const id information = cv::send<id>(bundle, "infoDictionary");
    return information != nullptr ? CFDictionaryGetValue(reinterpret_cast<CFDictionaryRef>(information), key) : nullptr;
}

/// The same as text; empty when there is no value or it is not a text.
String mainBundleText(CFStringRef key) {
    const CFTypeRef value = mainBundleValue(key);
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) {
        return String("");
    }
    return CFString(static_cast<CFStringRef>(CFRetain(value)), CFString::ReleaseOnDestroy).ToString();
}

}  // namespace

String GetCurrentProcessName() {
    const ProcessSerialNumber current = {0, kCurrentProcess};
    Str255 name = {};
    ProcessInfoRec information = {};
    information.processInfoLength = sizeof information;
    information.processName = name;
    if (GetProcessInformation(&current, &information) != noErr) {
        return String("");
    }
    return String(reinterpret_cast<const char*>(name + 1), name[0]);
}

String GetCurrentProcessDisplayName() {
    for (const CFStringRef key : {CFSTR("CFBundleDisplayName"), CFSTR("CFBundleName")}) {
        const String name = mainBundleText(key);
        if (!name.IsEmpty()) {
            return name;
        }
    }
    return GetCurrentProcessName();
}

String GetCurrentProcessDisplayVersion() {
    return mainBundleText(CFSTR("CFBundleVersion"));
}

std::int32_t GetCurrentProcessID() {
    return getpid();
}

std::int32_t GetNumLogicalProcessors() {
    const ItemCount count = MPProcessors();
    return count == 0 ? 1 : static_cast<std::int32_t>(count);
}

bool IsModalDialogAllowed() {
    return true;
}

std::uint64_t GetTotalHeapAllocatedBytes() {
    return 0;
}

void GetCallStack(unsigned int, unsigned int* frameCount) {
    *frameCount = 0;
}

bool ParseMapFile(std::map<unsigned int, MapFileFunctionInfo>&, const FilePath&, unsigned int) {
    return false;
}

bool MapFileLookupReturnAddress(ReturnAddressInfo&, unsigned int, const std::map<unsigned int, MapFileFunctionInfo>&) {
    return false;
}

}  // namespace Util
