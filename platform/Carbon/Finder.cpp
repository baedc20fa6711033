#include "platform/Carbon/Finder.h"

#include <dlfcn.h>

#include <cstdlib>
#include <string>

#include "platform/Carbon/TrashModule.h"
#include "platform/Companion.h"
#include "platform/Report.h"

namespace cv {

namespace {

/// The function of the Trash's module, which then stays loaded; null, with a line on standard error, without one.
decltype(&CvMoveToTrash) loadTrash() {
    void* const module = dlopen(companionPath("CvTrash.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const function = module != nullptr ? dlsym(module, "CvMoveToTrash") : nullptr;
    if (function == nullptr) {
        const char* const reason = dlerror();
        report("AESend", std::string("the Trash cannot be used: ") + (reason != nullptr ? reason : "no reason given"));
    }
    return reinterpret_cast<decltype(&CvMoveToTrash)>(function);
}

/// Whether an insertion location is the property "the Trash" of the application itself.
bool isTrash(const AppleEventParameter& location) {
    if (location.type != typeObjectSpecifier) {
        return false;
    }
    const AppleEventParameter* desiredClass = findParameter(location.data, keyAEDesiredClass);
    const AppleEventParameter* keyForm = findParameter(location.data, keyAEKeyForm);
    const AppleEventParameter* keyData = findParameter(location.data, keyAEKeyData);
    const AppleEventParameter* container = findParameter(location.data, keyAEContainer);
    return desiredClass != nullptr && keyForm != nullptr && keyData != nullptr && container != nullptr &&
           desiredClass->as<DescType>(typeType) == DescType{cObject} &&
           keyForm->as<DescType>(typeEnumerated) == DescType{formPropertyID} &&
           keyData->as<DescType>(typeType) == DescType{kTrashFolderType} && container->type == typeNull;
}

/// A process without HOME has no Trash: nothing of its files should go to where nobody told it to put them.
bool hasHome() {
    const char* home = std::getenv("HOME");
    return home != nullptr && home[0] == '/';
}

}  // namespace

OSErr handleFinderEvent(const OpaqueAEDataStorage& event, std::optional<std::chrono::milliseconds> timeout) {
    if (event.eventClass != kAECoreSuite || event.eventID != kAEMove) {
        return errAEEventNotHandled;
    }
    const AppleEventParameter* directObject = findParameter(event, keyDirectObject);
    const AppleEventParameter* location = findParameter(event, keyAEInsertHere);
    if (directObject == nullptr || location == nullptr) {
        return errAEDescNotFound;
    }
    const auto item = directObject->as<FSRef>(typeFSRef);
    if (!item || !isTrash(*location)) {
        return errAECoercionFail;
    }
    if (!hasHome()) {
        return dirNFErr;
    }
    const auto moveToTrash = loadTrash();
    return moveToTrash != nullptr ? moveToTrash(&*item, timeout ? timeout->count() : -1) : OSErr{errFSUnknownCall};
}

}  // namespace cv
