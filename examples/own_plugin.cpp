// An installer plug-in of one's own, for installer-host to run: it counts its installations in a preference.
//
//     installer-host run --root FOLDER OwnPlugIn.bundle

#include "CvBase/Mac/CFReference.h"
#include "CvBase/Util/CFString.h"
#include "plugin/InstallerInterface.h"

namespace {

ULONG g_references = 0;

HRESULT queryInterface(void* self, REFIID id, LPVOID* out);

// The one instance lives as long as the code does, so its references need no more than a count.
ULONG addReference(void*) {
    return ++g_references;
}

ULONG release(void*) {
    return --g_references;
}

void countInstallation() {
    const Util::CFString key("Installations", Util::CFString::ReleaseOnDestroy);
    const Util::CFString domain("com.example.ownplugin", Util::CFString::ReleaseOnDestroy);
    const cv::CFReference stored(
        CFPreferencesCopyValue(key.Get(), domain.Get(), kCFPreferencesAnyUser, kCFPreferencesCurrentHost));
    SInt32 count = 0;
    if (stored) {
        CFNumberGetValue(static_cast<CFNumberRef>(stored.get()), kCFNumberSInt32Type, &count);
    }
    ++count;
    const cv::CFReference number(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &count));
    CFPreferencesSetValue(key.Get(), number.get(), domain.Get(), kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    CFPreferencesSynchronize(domain.Get(), kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}

void runStep(XCodParamBlock* block) {
    if (block->version != XCOD_BLOCK_VERSION) {
        block->resultFlags |= XCOD_RESULT_FAILED;
    } else if (block->selector == XCodSelectorPostInstall) {
        countInstallation();
    }
}

const XCodFunctionBlock TABLE = {nullptr, queryInterface, addReference, release, runStep};
const XCodFunctionBlock* g_instance = &TABLE;

HRESULT queryInterface(void* self, REFIID id, LPVOID* out) {
    const cv::CFReference wanted(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, id));
    const bool known = CFEqual(wanted.get(), XCodInterfaceID()) || CFEqual(wanted.get(), IUnknownUUID);
    *out = known ? self : nullptr;
    g_references += known ? 1 : 0;
    return known ? S_OK : E_NOINTERFACE;
}

}  // namespace

/// What the bundle's Info.plist names as its factory.
extern "C" __attribute__((visibility("default"))) void* MyFactory(CFAllocatorRef, CFUUIDRef type) {
    const bool known = CFEqual(type, XCodPlugInTypeID());
    g_references += known ? 1 : 0;
    return known ? &g_instance : nullptr;
}
