// AppKit is loaded when a program first asks for the class NSAlert, not linked: a program that shows no alert needs
// neither AppKit nor a display.

#include <dlfcn.h>
#include <objc/runtime.h>

#include <cstring>
#include <string>

#include "platform/AppKit/Display.h"
#include "platform/CoreFoundation/Bridge.h"
#include "platform/Report.h"

#import "platform/AppKit/ConsoleAlert.h"
#import "platform/AppKit/WideAlert.h"

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

// What GNUstep's NSAlert does differently from a Mac's is put right in two of its methods.

id (*initAlert)(id, SEL) = nullptr;
NSInteger (*runAlert)(id, SEL) = nullptr;

/// init, and then an empty informative text: without one, GNUstep shows "No information" where a Mac shows nothing.
id initWithoutInformation(id self, SEL name) {
    const id alert = initAlert(self, name);
    [alert setInformativeText:@""];
    return alert;
}

NSInteger runModal(id self, SEL name) {
    constexpr NSUInteger ROOM = 3;
    return [[self buttons] count] > ROOM ? cv::runWideAlert(self) : runAlert(self, name);
}

/// Puts `implementation` in the place of a method, and returns what was there.
template <typename Function>
Function replaceMethod(Class type, SEL name, Function implementation) {
    using AnyFunction = void (*)();  // what compilers let every function type be cast to and from
    const auto replacement = reinterpret_cast<IMP>(reinterpret_cast<AnyFunction>(implementation));
    const IMP original = method_setImplementation(class_getInstanceMethod(type, name), replacement);
    return reinterpret_cast<Function>(reinterpret_cast<AnyFunction>(original));
}

void adjustAlert() {
    const Class alert = objc_lookUpClass("NSAlert");
    initAlert = replaceMethod(alert, @selector(init), initWithoutInformation);
    runAlert = replaceMethod(alert, @selector(runModal), runModal);
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
            adjustAlert();
            return [objc_lookUpClass("NSApplication") sharedApplication] != nil;
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
