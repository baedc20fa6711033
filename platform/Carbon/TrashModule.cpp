#include "platform/Carbon/TrashModule.h"

#include <Carbon/AppleEvents.h>
#include <gio/gio.h>

#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <thread>

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
    const OSErr fault = FSGetCatalogInfo(&item, 0, nullptr, nullptr, nullptr, nullptr);
    if (fault != noErr) {
        return fault;
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
OSErr moveToTrashWithin(std::chrono::milliseconds timeout, const FSRef& item) {
    const auto cancellable = adopt(g_cancellable_new());
    std::packaged_task<OSErr()> task([item, cancellable] { return moveToTrash(item, cancellable.get()); });
    std::future<OSErr> result = task.get_future();
    std::thread(std::move(task)).detach();
    if (timeout.count() >= 0 && result.wait_for(timeout) == std::future_status::timeout) {
        g_cancellable_cancel(cancellable.get());
        return errAETimeout;
    }
    return result.get();
}

}  // namespace

OSErr CvMoveToTrash(const FSRef* item, SInt64 timeoutMilliseconds) {
    try {
        return moveToTrashWithin(std::chrono::milliseconds(timeoutMilliseconds), *item);
    } catch (const std::exception&) {  // no memory, or no further thread
        return memFullErr;
    }
}
