#include <CoreFoundation/CoreFoundation.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <map>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/Bundle.h"
#include "platform/CoreFoundation/PropertyListBridge.h"
#include "platform/Descriptor.h"
#include "platform/Report.h"

namespace {

struct BundleState {
    std::string path;
    CFDictionaryRef info = nullptr;
    void* code = nullptr;  ///< what dlopen gave; never closed
};

}  // namespace

@interface CvBundle : NSObject {
   @public
    BundleState* state_;
}
@end

namespace {

/// The living bundles by path. It lives to the end of the process, for bundles released by other destructors.
std::map<std::string, CvBundle*>& livingBundles() {
    static auto* const bundles = new std::map<std::string, CvBundle*>;
    return *bundles;
}

BundleState& stateOf(CFBundleRef bundle) {
    return *cv::object<CvBundle*>(bundle)->state_;
}

}  // namespace

@implementation CvBundle

// The last release and the look-up of a living bundle exclude each other.
- (oneway void)release {
    const std::lock_guard<std::recursive_mutex> lock(cv::bundleMutex());
    [super release];
}

- (void)dealloc {
    livingBundles().erase(state_->path);
    CFRelease(state_->info);
    delete state_;
    [super dealloc];
}

@end

namespace {

/// The path behind the URL, every link resolved; empty, with `reason` set, when nothing is there.
std::string resolvedPath(CFURLRef url, std::string& reason) {
    std::array<UInt8, PATH_MAX> buffer;
    if (url == nullptr || !CFURLGetFileSystemRepresentation(url, true, buffer.data(), buffer.size())) {
        reason = "no path of a file";
        return {};
    }
    const char* path = reinterpret_cast<const char*>(buffer.data());
    std::array<char, PATH_MAX> resolved;
    if (realpath(path, resolved.data()) == nullptr) {
        reason = std::string(path) + ": " + cv::errorText(errno);
        return {};
    }
    return resolved.data();
}

/// A new dictionary with what Info.plist holds; null, with `reason` set, when it cannot be read.
CFDictionaryRef createInfo(const std::string& bundlePath, std::string& reason) {
    const std::string path = bundlePath + "/Contents/Info.plist";
    const cv::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::string bytes;
    const int error = file.isOpen() ? cv::readAll(file.get(), cv::plist::MAX_FILE_SIZE, bytes) : errno;
    if (error != 0) {
        reason = path + ": " + cv::errorText(error);
        return nullptr;
    }
    const cv::plist::Parsed parsed = cv::plist::parse(bytes);
    if (parsed.root == nullptr || plist_get_node_type(parsed.root.get()) != PLIST_DICT) {
        reason = path + ": " + (parsed.root == nullptr ? parsed.reason : "its root is no dictionary");
        return nullptr;
    }
    return static_cast<CFDictionaryRef>(cv::plist::createReference(parsed.root.get()));
}

/// The path of the code file; empty, with `reason` set, when Info.plist names none or it is not there.
std::string executablePath(const BundleState& bundle, std::string& reason) {
    const auto name = cv::utf8Of(CFDictionaryGetValue(bundle.info, CFSTR("CFBundleExecutable")));
    if (!name || name->empty() || name->find('/') != std::string::npos) {
        reason = bundle.path + ": CFBundleExecutable in Info.plist does not name a file";
        return {};
    }
    const std::string path = bundle.path + "/Contents/Linux/" + *name;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        reason = path + ": there is no such file";
        return {};
    }
    return path;
}

bool load(BundleState& bundle) {
    const std::lock_guard<std::recursive_mutex> lock(cv::bundleMutex());
    if (bundle.code != nullptr) {
        return true;
    }
    std::string reason;
    const std::string path = executablePath(bundle, reason);
    if (!path.empty()) {
        bundle.code = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        const char* error = bundle.code == nullptr ? dlerror() : nullptr;
        reason = error != nullptr ? error : "";
    }
    if (bundle.code == nullptr) {
        cv::report("CFBundleLoadExecutable", reason);
    }
    return bundle.code != nullptr;
}

/// The address of what the bundle's own code exports under `name`: dlsym alone would also find the names of every
/// library that the code depends on.
void* exportedAddress(CFBundleRef bundle, CFStringRef name) {
    const auto symbol = bundle != nullptr ? cv::utf8Of(name) : std::nullopt;
    if (!symbol || !load(stateOf(bundle))) {
        return nullptr;
    }
    void* const code = stateOf(bundle).code;
    void* const address = dlsym(code, symbol->c_str());
    link_map* own = nullptr;
    void* owner = nullptr;
    Dl_info info{};
    const bool isKnown = address != nullptr && dlinfo(code, RTLD_DI_LINKMAP, &own) == 0 &&
                         dladdr1(address, &info, &owner, RTLD_DL_LINKMAP) != 0;
    return isKnown && owner == own ? address : nullptr;
}

}  // namespace

namespace cv {

std::recursive_mutex& bundleMutex() {
    static auto* const mutex = new std::recursive_mutex;
    return *mutex;
}

const std::string& bundlePath(CFBundleRef bundle) {
    return stateOf(bundle).path;
}

}  // namespace cv

CFTypeID CFBundleGetTypeID(void) {
    return cv::typeID([CvBundle class]);
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
    return cv::guarded<CFBundleRef>(nullptr, [=]() -> CFBundleRef {
        std::string reason;
        const std::string path = resolvedPath(url, reason);
        const std::lock_guard<std::recursive_mutex> lock(cv::bundleMutex());
        const auto living = livingBundles().find(path);
        if (living != livingBundles().end()) {
            return cv::reference<CFBundleRef>([living->second retain]);
        }
        const CFDictionaryRef info = path.empty() ? nullptr : createInfo(path, reason);
        if (info == nullptr) {
            cv::report("CFBundleCreate", reason);
            return nullptr;
        }
        CvBundle* bundle = [[CvBundle alloc] init];
        bundle->state_ = new BundleState{path, info, nullptr};
        livingBundles()[path] = bundle;
        return cv::reference<CFBundleRef>(bundle);
    });
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle) {
    return bundle != nullptr ? stateOf(bundle).info : nullptr;
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle) {
    const void* value =
        bundle != nullptr ? CFDictionaryGetValue(stateOf(bundle).info, CFSTR("CFBundleIdentifier")) : nullptr;
    return value != nullptr && CFGetTypeID(value) == CFStringGetTypeID() ? static_cast<CFStringRef>(value) : nullptr;
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle) {
    std::string reason;
    const std::string path = bundle != nullptr ? executablePath(stateOf(bundle), reason) : std::string();
    return path.empty() ? nullptr
                        : CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
                                                                  reinterpret_cast<const UInt8*>(path.data()),
                                                                  static_cast<CFIndex>(path.size()), false);
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
    return bundle != nullptr && load(stateOf(bundle));
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name) {
    return exportedAddress(bundle, name);
}

void* CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef name) {
    return exportedAddress(bundle, name);
}
