#include "platform/Carbon/Finder.h"

#include <gio/gio.h>

#include <cstdlib>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

#include "platform/Carbon/FileReference.h"

namespace cv {

namespace {

template <typename Object>
std::shared_ptr<Object> adopt(Object* object) {
    return std::shared_ptr<Object>(object, g_object_unref);
}

OSErr trashError(const GError& error) {
    if (error.domain != G_IO_ERROR) {
        return ioErr;
    }
    switch (error.code) {
        case G_IO_ERROR_NOT_FOUND:
            return errFSBadFSRef;
        case G_IO_ERROR_PERMISSION_DENIED:
            return afpAccessDenied;
        case G_IO_ERROR_READ_ONLY:
            return wPrErr;
        case G_IO_ERROR_NO_SPACE:
            return dskFulErr;
        case G_IO_ERROR_NOT_SUPPORTED:
            return errFSUnknownCall;
        case G_IO_ERROR_CANCELLED:
            return errAETimeout;
        default:
            return ioErr;
    }
}

OSErr moveToTrash(const FSRef& item, GCancellable* cancellable) {
    const OpenReference object(&item);
    if (object.error() != noErr) {
        return object.error();
    }
    // The local file system's own, whatever virtual ones a desktop has plugged into the process.
    const auto file = adopt(g_vfs_get_file_for_path(g_vfs_get_local(), item.path));
    GError* error = nullptr;
    if (g_file_trash(file.get(), cancellable, &error)) {
        return noErr;
    }
    const OSErr result = trashError(*error);
    g_error_free(error);
    return result;
}

/// In a thread of its own: a volume that does not answer holds up whoever asks it, and nothing can interrupt that.
OSErr moveToTrashWithin(std::optional<std::chrono::milliseconds> timeout, const FSRef& item) {
    const auto cancellable = adopt(g_cancellable_new());
    std::packaged_task<OSErr()> task([item, cancellable] { return moveToTrash(item, cancellable.get()); });
    std::future<OSErr> result = task.get_future();
    std::thread(std::move(task)).detach();
    if (timeout && result.wait_for(*timeout) == std::future_status::timeout) {
        g_cancellable_cancel(cancellable.get());
        return errAETimeout;
    }
    return result.get();
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

/// GIO would fall back to the home folder of the user's account. A process without HOME has no Trash: nothing of its
/// files should go to where nobody told it to put them.
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
    try {
        return moveToTrashWithin(timeout, *item);
    } catch (const std::system_error&) {  // no further thread
        return memFullErr;
    }
}

}  // namespace cv
