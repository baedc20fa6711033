#include <climits>
#include <cstdlib>
#include <new>
#include <string>

#include "platform/CoreFoundation/Bundle.h"
#include "platform/ObjC/Classes.h"

namespace cv {

namespace {

/// The bundle that the running program lies in: of PATH/Contents/Linux/PROGRAM that is PATH. Immortal.
struct MainBundle : objc_object {
    explicit MainBundle(Owned<__CFDictionary> information)
        : objc_object(BUNDLE_PROXY_CLASS, IMMORTAL), info(std::move(information)) {}

    const Owned<__CFDictionary> info;
};

/// The main bundle's path; empty for a program outside a bundle.
std::string mainBundlePath() {
    constexpr std::string_view CODE_FOLDER = "/Contents/Linux";
    char path[PATH_MAX];
    if (realpath("/proc/self/exe", path) == nullptr) {
        return {};
    }
    std::string folder = path;
    folder.erase(folder.rfind('/'));
    const bool isBundle = folder.size() > CODE_FOLDER.size() &&
                          folder.compare(folder.size() - CODE_FOLDER.size(), CODE_FOLDER.size(), CODE_FOLDER) == 0;
    return isBundle ? folder.substr(0, folder.size() - CODE_FOLDER.size()) : std::string();
}

/// What the main bundle's Info.plist holds; an empty dictionary where there is none that can be read.
Owned<__CFDictionary> readMainInfo() {
    const std::string path = mainBundlePath();
    if (!path.empty()) {
        if (auto info = readInfo(path)) {
            return std::move(*info);
        }
    }
    return Owned<__CFDictionary>(new __CFDictionary({}));
}

id mainBundle(id, SEL) {
    static MainBundle* const bundle = new MainBundle(readMainInfo());
    return bundle;
}

id infoDictionary(id self, SEL) {
    return const_cast<__CFDictionary*>(static_cast<MainBundle*>(self)->info.get());
}

IMP classMethod(std::string_view selector) {
    static const Method METHODS[] = {{"mainBundle", method(mainBundle)}};
    return findMethod(METHODS, selector);
}

IMP bundleMethod(std::string_view selector) {
    static const Method METHODS[] = {{"infoDictionary", method(infoDictionary)}};
    return findMethod(METHODS, selector);
}

const objc_class METACLASS("NSBundle", OBJECT_METACLASS, &OBJECT_METACLASS, classMethod);

}  // namespace

const objc_class BUNDLE_PROXY_CLASS("NSBundle", METACLASS, &OBJECT_CLASS, bundleMethod);

}  // namespace cv
