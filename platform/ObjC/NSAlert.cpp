#include "platform/Alert/Alert.h"
#include "platform/CoreFoundation/String.h"
#include "platform/ObjC/Classes.h"

namespace cv {

namespace {

/// NSAlertFirstButtonReturn; the other buttons follow it.
constexpr long FIRST_BUTTON_RETURN = 1000;

struct AlertPanel : objc_object {
    AlertPanel() : objc_object(ALERT_CLASS) {}
    Alert alert;
};

Alert& alertOf(id self) {
    return static_cast<AlertPanel*>(self)->alert;
}

id alloc(id, SEL) {
    return new AlertPanel;
}

id init(id self, SEL) {
    return self;
}

/// Text with an unpaired surrogate shows as empty.
void setMessageText(id self, SEL, id text) {
    alertOf(self).message = utf8Of(text).value_or("");
}

/// Another style than the three of NSAlertStyle leaves the panel the one it has.
void setAlertStyle(id self, SEL, unsigned long style) {
    if (style <= static_cast<unsigned long>(AlertStyle::Critical)) {
        alertOf(self).style = static_cast<AlertStyle>(style);
    }
}

/// Gives the title back: there is no button object.
id addButtonWithTitle(id self, SEL, id title) {
    alertOf(self).buttons.push_back(utf8Of(title).value_or(""));
    return title;
}

long runModal(id self, SEL) {
    Alert alert = alertOf(self);
    if (alert.buttons.empty()) {
        alert.buttons = {"OK"};
    }
    return FIRST_BUTTON_RETURN + static_cast<long>(runAlert(alert));
}

IMP classMethod(std::string_view selector) {
    static const Method METHODS[] = {{"alloc", method(alloc)}};
    return findMethod(METHODS, selector);
}

IMP alertMethod(std::string_view selector) {
    static const Method METHODS[] = {
        {"addButtonWithTitle:", method(addButtonWithTitle)},
        {"init", method(init)},
        {"runModal", method(runModal)},
        {"setAlertStyle:", method(setAlertStyle)},
        {"setMessageText:", method(setMessageText)},
    };
    return findMethod(METHODS, selector);
}

const objc_class METACLASS("NSAlert", OBJECT_METACLASS, &OBJECT_METACLASS, classMethod);

}  // namespace

const objc_class ALERT_CLASS("NSAlert", METACLASS, &OBJECT_CLASS, alertMethod, identityOf<AlertPanel>());

}  // namespace cv
