// AppKit is loaded when a program first asks for the class NSAlert, not linked: a program that shows no alert needs
// neither AppKit nor a display.

#include <dlfcn.h>
#include <objc/runtime.h>

#include <cstring>
#include <string>

#include "platform/AppKit/Display.h"
#include "platform/CoreFoundation/Bridge.h"
#include "platform/MessageSend.h"
#include "platform/Report.h"

#import "platform/AppKit/ConsoleAlert.h"

namespace {

/// Debian's libgnustep-gui0.29.
constexpr char APPKIT_LIBRARY[] = "libgnustep-gui.so.0.29";

objc_get_unknown_class_handler previousHandler = nullptr;

/// GNUstep's panels draw their own frames, so that they look the same with and without a window manager, and a program
/// that only shows an alert puts no icon on the screen. The user's own settings win.
void registerDefaults() {
    NSDictionary* const defaults = [NSDictionary
        dictionaryWithObjectsAndKeys:@"NO", @"GSX11HandlesWindowDecorations", @"YES", @"GSSuppressAppIcon", nil];
    [[NSUserDefaults standardUserDefaults] registerDefaults:defaults];
}

IMP initAlert = nullptr;

/// NSAlert's init, and then an empty informative text: without one, GNUstep shows "No information" where a Mac shows
/// nothing.
id initAlertWithoutInformation(id self, SEL name) {
    const id alert = reinterpret_cast<id (*)(id, SEL)>(initAlert)(self, name);
    cv::send<void>(alert, "setInformativeText:", static_cast<id>(@""));
    return alert;
}

void replaceInit(Class alert) {
    const Method init = class_getInstanceMethod(alert, sel_registerName("init"));
    initAlert = method_setImplementation(init, reinterpret_cast<IMP>(initAlertWithoutInformation));
}

/// Loads AppKit and connects it to the display, once; false, with a line on standard error, when it cannot be had.
bool loadAppKit() {
    static const bool loaded = [] {
        if (dlopen(APPKIT_LIBRARY, RTLD_NOW | RTLD_GLOBAL) == nullptr) {
            cv::report("AppKit", std::string(dlerror()) + "; alerts are shown on the terminal");
            return false;
        }
        const bool connected = cv::guarded(false, [] {
            registerDefaults();
            replaceInit(objc_lookUpClass("NSAlert"));
            const Class application = objc_lookUpClass("NSApplication");
            return cv::send<id>(reinterpret_cast<id>(application), "sharedApplication") != nil;
        });
        if (!connected) {
            cv::report("AppKit", "it does not start; alerts are shown on the terminal");
        }
        return connected;
    }();
    return loaded;
}

Class classForUnknownName(const char* name) {
    if (std::strcmp(name, "NSAlert") == 0) {
        return cv::displayAnswers() && loadAppKit() ? objc_lookUpClass(name) : [CVConsoleAlert class];
    }
    return previousHandler == nullptr ? Nil : previousHandler(name);
}

__attribute__((constructor)) void installHandler() {
    previousHandler = objc_setGetUnknownClassHandler(classForUnknownName);
}

}  // namespace
