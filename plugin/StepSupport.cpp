#include "plugin/StepSupport.h"

#include "CvBase/common/common_string.h"
#include "UI/Native/MessageBox.h"
#include "plugin/AlertResource.h"

namespace {

/// The dialog resource with the installer's own form of the alert. It is not part of the plug-in.
constexpr SInt16 WRONG_VERSION_ALERT_ID = 5000;

}  // namespace

bool acceptBlockVersion(XCodParamBlock& block) {
    if (block.version == XCOD_BLOCK_VERSION) {
        return true;
    }
    // Both steps share this text, although one of them is not a post-install step.
    UI::Native::MessageOK(nullptr, "Post Install", "Unable to set post install option keys.", false,
                          UI::Native::IconType{0});
    showAlertResource(WRONG_VERSION_ALERT_ID);
    block.resultFlags |= XCOD_RESULT_FAILED;
    return false;
}

void setMachinePreference(CFStringRef key, CFPropertyListRef value, CFStringRef domain) {
    CFPreferencesSetValue(key, value, domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}

void synchronizeMachinePreferences(CFStringRef domain) {
    CFPreferencesSynchronize(domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}
