#include "UI/Native/MessageBox.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

#include "CvBase/Mac/MessageSend.h"
#include "CvBase/Util/CFString.h"
#include "CvBase/Util/PlatformInfo.h"

namespace UI {
namespace Native {

namespace {

/// The platform's styles of an alert.
enum NSAlertStyle : cv::UInteger { NSWarningAlertStyle = 0, NSInformationalAlertStyle = 1, NSCriticalAlertStyle = 2 };

/// The style for each IconType.
constexpr NSAlertStyle ALERT_STYLES[] = {NSInformationalAlertStyle, NSCriticalAlertStyle, NSWarningAlertStyle,
                                         NSInformationalAlertStyle, NSInformationalAlertStyle};

/// What runModal answers for the first button and the third.
constexpr cv::Integer NSAlertFirstButtonReturn = 1000;
constexpr cv::Integer NSAlertThirdButtonReturn = 1002;

struct SendRelease {
    void operator()(id object) const { cv::send<void>(object, "release"); }
};
using Panel = std::unique_ptr<objc_object, SendRelease>;

Panel makePanel() {
    return Panel(cv::send<id>(cv::send<id>(cv::classNamed("NSAlert"), "alloc"), "init"));
}

/// `text` as an object that lives as long as the caller's autorelease pool.
id autoreleased(const Util::CFString& text) {
    const id object = reinterpret_cast<id>(const_cast<__CFString*>(text.Get()));
    return cv::send<id>(cv::send<id>(object, "retain"), "autorelease");
}

void setStyle(const Panel& panel, IconType icon) {
    const auto index = static_cast<std::uint32_t>(icon);
    if (index < sizeof ALERT_STYLES / sizeof *ALERT_STYLES) {
        cv::send<void>(panel.get(), "setAlertStyle:", cv::UInteger{ALERT_STYLES[index]});
    }
}

void addButtons(const Panel& panel, std::initializer_list<CFStringRef> titles) {
    for (const CFStringRef title : titles) {
        cv::send<id>(panel.get(), "addButtonWithTitle:", reinterpret_cast<id>(const_cast<__CFString*>(title)));
    }
}

/// The one panel that all the String forms show. True for the first button. With `cancelled`, which adds a "Cancel" to
/// "Yes" and "No", that tells the second button from the third.
bool standardAlertDialog(const String& message, IconType icon, bool okCancel, bool yesNo, bool /*focus*/,
                         bool* cancelled, bool retry) {
    okCancel = okCancel || yesNo || retry;
    const Panel panel = makePanel();
    {
        const Util::CFString text(message, Util::CFString::ReleaseOnDestroy);
        cv::send<void>(panel.get(), "setMessageText:", autoreleased(text));
    }
    setStyle(panel, icon);
    if (yesNo) {
        addButtons(panel, {CFSTR("Yes")});
        if (cancelled != nullptr) {
            addButtons(panel, {CFSTR("Cancel")});
        }
        addButtons(panel, {CFSTR("No")});
    } else if (okCancel) {
        addButtons(panel, {CFSTR("OK"), CFSTR("Cancel")});
    }
    if (retry) {
        addButtons(panel, {CFSTR("Retry"), CFSTR("Cancel")});
    }
    const auto button = cv::send<cv::Integer>(panel.get(), "runModal");
    if (cancelled != nullptr) {
        *cancelled = button != NSAlertFirstButtonReturn && button != NSAlertThirdButtonReturn;
    }
    return button == NSAlertFirstButtonReturn;
}

}  // namespace

bool MessageOK(void*, const String&, const String& message, bool, IconType icon) {
    return Util::IsModalDialogAllowed() && standardAlertDialog(message, icon, false, false, false, nullptr, false);
}

bool MessageOKCancel(void*, const String&, const String& message, OKCancelFocus focus, bool, IconType icon) {
    return Util::IsModalDialogAllowed() && standardAlertDialog(message, icon, true, false, !focus, nullptr, false);
}

bool MessageYesNo(void*, const String&, const String& message, YesNoFocus focus, bool, IconType icon) {
    return Util::IsModalDialogAllowed() && standardAlertDialog(message, icon, true, true, !focus, nullptr, false);
}

bool MessageYesNoCancel(bool& cancelled, void*, const String&, const String& message, YesNoCancelFocus focus, bool,
                        IconType icon) {
    return Util::IsModalDialogAllowed() && standardAlertDialog(message, icon, true, true, !focus, &cancelled, false);
}

bool MessageRetryCancel(void*, const String&, const String& message, RetryCancelFocus focus, bool, IconType icon) {
    return Util::IsModalDialogAllowed() && standardAlertDialog(message, icon, true, false, !focus, nullptr, true);
}

void MessageOK(void*, const std::vector<unsigned short>&, const std::vector<unsigned short>& message,
               const std::vector<unsigned short>& third, bool, IconType) {
    if (!Util::IsModalDialogAllowed() || third.empty() || message.empty()) {
        return;
    }
    const auto toPlatform = [](const std::vector<unsigned short>& units) {
        return Util::CFString(
            CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), static_cast<CFIndex>(units.size())),
            Util::CFString::ReleaseOnDestroy);
    };
    const Util::CFString unused = toPlatform(third);
    const Panel panel = makePanel();
    cv::send<void>(panel.get(), "setMessageText:", autoreleased(toPlatform(message)));
    cv::send<cv::Integer>(panel.get(), "runModal");
}

}  // namespace Native
}  // namespace UI
