#include "plugin/Factory.h"

#include <Carbon/Carbon.h>

#include "CvBase/Mac/CFReference.h"
#include "plugin/Dispatch.h"

std::int32_t g_cvPluginID = 0;

namespace {

HRESULT myQueryInterface(void* self, REFIID iid, LPVOID* out);
ULONG myAddRef(void* self);
ULONG myRelease(void* self);

/// The one interface table, shared by all instances.
const XCodFunctionBlock gXcodFunctionBlock = {nullptr, myQueryInterface, myAddRef, myRelease, XCodMain};

/// Adds to the count with wrap-around and returns the new value.
ULONG changeCount(XCodInstance& instance, ULONG amount) {
    const ULONG count = static_cast<ULONG>(instance.referenceCount) + amount;
    instance.referenceCount = static_cast<SInt32>(count);
    return count;
}

HRESULT myQueryInterface(void* self, REFIID iid, LPVOID* out) {
    const cv::CFReference wanted(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, iid));
    const bool known = CFEqual(wanted.get(), XCodInterfaceID()) || CFEqual(wanted.get(), IUnknownUUID);
    if (known) {
        static_cast<XCodInstance*>(self)->functionBlock->AddRef(self);
    }
    *out = known ? self : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

ULONG myAddRef(void* self) {
    return changeCount(*static_cast<XCodInstance*>(self), 1);
}

ULONG myRelease(void* self) {
    auto* const instance = static_cast<XCodInstance*>(self);
    const ULONG count = changeCount(*instance, static_cast<ULONG>(-1));
    if (count != 0) {
        return count;
    }
    const CFUUIDRef factoryID = instance->factoryID;
    DisposePtr(reinterpret_cast<Ptr>(instance));
    if (factoryID != nullptr) {
        CFPlugInRemoveInstanceForFactory(factoryID);
        CFRelease(factoryID);
    }
    return 0;
}

}  // namespace

void* MyFactory(CFAllocatorRef, CFUUIDRef typeID) {
    if (!CFEqual(typeID, XCodPlugInTypeID())) {
        return nullptr;
    }
    auto* const instance = reinterpret_cast<XCodInstance*>(NewPtr(sizeof(XCodInstance)));
    if (instance == nullptr) {
        return nullptr;
    }
    *instance = {&gXcodFunctionBlock, nullptr, 1};
    return instance;
}
