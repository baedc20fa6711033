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
#include <mutex>
#include <new>

#include "platform/BundleProblem.h"
#include "platform/CoreFoundation/Bundle.h"
#include "platform/CoreFoundation/PropertyListBridge.h"
#include "platform/CoreFoundation/String.h"
#include "platform/Descriptor.h"
#include "platform/PropertyList/PropertyList.h"
#include "platform/Report.h"

namespace {

/// The living bundles by path. It lives to the end of the process, for bundles released by other destructors.
struct LivingBundles {
    std::mutex mutex;
    std::map<std::string, __CFBundle*> byPath;
};

LivingBundles& livingBundles() {
    static auto* const bundles = new LivingBundles;
    return *bundles;
}

void destroyBundle(const objc_object* object) {
    const auto* const bundle = static_cast<const __CFBundle*>(object);
    {
        LivingBundles& living = livingBundles();
        const std::lock_guard<std::mutex> lock(living.mutex);
        const auto own = living.byPath.find(bundle->path);
        // Since the last release another one may have taken its place.
        if (own != living.byPath.end() && own->second == bundle) {
            living.byPath.erase(own);
        }
    }
    delete bundle;
}

const objc_class BUNDLE_CLASS("__NSCFBundle", cv::OBJECT_METACLASS, &cv::OBJECT_CLASS, nullptr,
                              {destroyBundle, nullptr, nullptr});

using OwnedBundle = std::unique_ptr<__CFBundle, cv::ReleaseObject>;

/// The living bundle of the path, retained; `fresh` where there is none, and then it is the living one.
CFBundleRef livingOr(OwnedBundle fresh) {
    LivingBundles& living = livingBundles();
    const std::lock_guard<std::mutex> lock(living.mutex);
    const auto [place, isNew] = living.byPath.try_emplace(fresh->path, nullptr);
    if (!isNew && place->second->retain()) {
        return place->second;
    }
    place->second = fresh.get();
    return fresh.release();
}

/// The living bundle of the path, retained; null when there is none.
CFBundleRef copyLiving(const std::string& path) {
    LivingBundles& living = livingBundles();
    const std::lock_guard<std::mutex> lock(living.mutex);
    const auto found = living.byPath.find(path);
    return found != living.byPath.end() && found->second->retain() ? found->second : nullptr;
}

/// The path that the URL leads to, every link resolved.
cv::Result<std::string> resolvedPath(CFURLRef url) {
    std::array<UInt8, PATH_MAX> buffer;
    if (url == nullptr || !CFURLGetFileSystemRepresentation(url, true, buffer.data(), buffer.size())) {
        return cv::Fault{"", "the URL is not the path of a file"};
    }
    const char* path = reinterpret_cast<const char*>(buffer.data());
    std::array<char, PATH_MAX> resolved;
    if (realpath(path, resolved.data()) != nullptr) {
        return std::string(resolved.data());
    }
    if (errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return cv::Fault{path, cv::errorText(errno)};
}

/// The path of the code file that Info.plist names.
cv::Result<std::string> executablePath(const __CFBundle& bundle) {
    const auto name = cv::utf8Of(CFDictionaryGetValue(bundle.info.get(), CFSTR("CFBundleExecutable")));
    if (!name || name->empty() || name->find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
        return cv::Fault{bundle.path, "CFBundleExecutable in Info.plist does not name a file"};
    }
    const std::string path = bundle.path + "/Contents/Linux/" + *name;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return cv::Fault{path, cv::errorText(errno)};
    }
    if (!S_ISREG(status.st_mode)) {
        return cv::Fault{path, "it is not a file"};
    }
    return path;
}

/// Without a lock around dlopen: the initialisers of the code may come back here, on any thread.
bool load(__CFBundle& bundle) {
    if (bundle.code != nullptr) {
        return true;
    }
    const auto path = executablePath(bundle);
    void* const code = path ? dlopen((*path).c_str(), RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (code == nullptr) {
        const char* const error = path ? dlerror() : nullptr;
        cv::bundleFailed("CFBundleLoadExecutable", error != nullptr ? error : path.fault().text());
        return false;
    }
    void* expected = nullptr;
    if (!bundle.code.compare_exchange_strong(expected, code)) {
        dlclose(code);  // another thread was first, and its reference keeps the code loaded
    }
    return true;
}

/// The address of what the bundle's own code exports under `name`: dlsym alone would also find the names of every
/// library that the code depends on.
void* exportedAddress(CFBundleRef bundle, CFStringRef name) {
    const auto symbol = bundle != nullptr ? cv::utf8Of(name) : std::nullopt;
    if (!symbol || !load(*bundle)) {
        return nullptr;
    }
    void* const code = bundle->code;
    void* const address = dlsym(code, symbol->c_str());
    link_map* own = nullptr;
    void* owner = nullptr;
    Dl_info info{};
    const bool isKnown = address != nullptr && dlinfo(code, RTLD_DI_LINKMAP, &own) == 0 &&
                         dladdr1(address, &info, &owner, RTLD_DL_LINKMAP) != 0;
    return isKnown && owner == own ? address : nullptr;
}

thread_local std::string g_problem;

}  // namespace

void cv::bundleFailed(const char* call, const std::string& reason) {
    report(call, reason);
    g_problem = reason;
}

std::string cv::bundleProblem() {
    return g_problem;
}

__CFBundle::__CFBundle(std::string location, cv::Owned<__CFDictionary> information)
    : objc_object(BUNDLE_CLASS), path(std::move(location)), info(std::move(information)) {}

cv::Result<cv::Owned<__CFDictionary>> cv::readInfo(const std::string& bundlePath) {
    const std::string path = bundlePath + "/Contents/Info.plist";
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::string bytes;
    const int error = file.isOpen() ? readAll(file.get(), plist::MAX_FILE_SIZE, bytes) : errno;
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    if (error != 0) {
        return Fault{path, errorText(error)};
    }
    const plist::Parsed parsed = plist::parse(bytes);
    if (!parsed.root || parsed.root->dictionary() == nullptr) {
        return Fault{path, parsed.root ? "its root is not a dictionary" : parsed.reason};
    }
    return Owned<__CFDictionary>(static_cast<CFDictionaryRef>(plist::createObject(*parsed.root)));
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
    const auto path = resolvedPath(url);
    if (!path) {
        cv::bundleFailed("CFBundleCreate", path.fault().text());
        return nullptr;
    }
    if (const CFBundleRef living = copyLiving(*path)) {
        return living;
    }
    auto info = cv::readInfo(*path);
    if (!info) {
        cv::bundleFailed("CFBundleCreate", info.fault().text());
        return nullptr;
    }
    return livingOr(OwnedBundle(new __CFBundle(*path, std::move(*info))));
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle) {
    return bundle != nullptr ? bundle->info.get() : nullptr;
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle) {
    const void* value =
        bundle != nullptr ? CFDictionaryGetValue(bundle->info.get(), CFSTR("CFBundleIdentifier")) : nullptr;
    return cv::objectOf<__CFString>(cv::STRING_CLASS, value);
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
    return bundle != nullptr && load(*bundle);
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name) {
    return exportedAddress(bundle, name);
}

void* CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef name) {
    return exportedAddress(bundle, name);
}
