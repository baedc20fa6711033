// Shows one message box and says what the user saw and what the program got:
//
//     MessageBoxDriver FORM ICON MESSAGE [PRESS]
//
// When the panel is up, prints a line for each text and each button in it, and presses PRESS: the title of a button, or
// TITLE/N for the N-th of that title. At the end, prints the answer.

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "UI/Native/MessageBox.h"
#include "platform/MessageSend.h"

namespace {

using namespace UI::Native;

std::string pressed;  ///< PRESS

std::string text(id string) {
    const char* const bytes = cv::send<const char*>(string, "UTF8String");
    return bytes == nullptr ? "" : bytes;
}

void forEachView(id view, const std::function<void(id)>& visit) {
    visit(view);
    const id children = cv::send<id>(view, "subviews");
    for (cv::UInteger i = 0; i < cv::send<cv::UInteger>(children, "count"); ++i) {
        forEachView(cv::send<id>(children, "objectAtIndex:", i), visit);
    }
}

/// Called by the run loop of the modal panel.
void answerPanel(id, SEL) {
    const id application = cv::send<id>(cv::classNamed("NSApplication"), "sharedApplication");
    const id window = cv::send<id>(application, "modalWindow");
    std::map<std::string, int> seen;
    id button = nullptr;
    forEachView(cv::send<id>(window, "contentView"), [&](id view) {
        const auto is = [&](const char* name) {
            return cv::send<BOOL>(view, "isKindOfClass:", objc_lookUpClass(name)) != 0;
        };
        if (is("NSButton") && cv::send<BOOL>(view, "isBordered")) {  // the icon is a button without border
            const std::string title = text(cv::send<id>(view, "title"));
            std::printf("button %s\n", title.c_str());
            const int number = ++seen[title];
            if (pressed == title + "/" + std::to_string(number) || (pressed == title && number == 1)) {
                button = view;
            }
        } else if (is("NSTextField")) {
            if (const std::string shown = text(cv::send<id>(view, "stringValue")); !shown.empty()) {
                std::printf("text %s\n", shown.c_str());
            }
        }
    });
    std::fflush(stdout);
    cv::send<void>(button, "performClick:", button);
}

/// Has answerPanel called as soon as a modal panel runs.
void watchForPanel() {
    const auto* const mode = static_cast<const id*>(dlsym(RTLD_DEFAULT, "NSModalPanelRunLoopMode"));
    if (mode == nullptr) {
        return;  // there is no AppKit
    }
    const Class watcherClass =
        objc_allocateClassPair(reinterpret_cast<Class>(cv::classNamed("NSObject")), "PanelWatcher", 0);
    class_addMethod(watcherClass, sel_registerName("answerPanel"),
                    reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(answerPanel)), "v@:");
    objc_registerClassPair(watcherClass);
    const id watcher = cv::send<id>(cv::send<id>(reinterpret_cast<id>(watcherClass), "alloc"), "init");
    const id modes = cv::send<id>(cv::classNamed("NSArray"), "arrayWithObject:", *mode);
    cv::send<void>(cv::send<id>(cv::classNamed("NSRunLoop"), "currentRunLoop"),
                   "performSelector:target:argument:order:modes:", sel_registerName("answerPanel"), watcher,
                   static_cast<id>(nullptr), cv::UInteger{0}, modes);
}

void show(const std::string& form, IconType icon, const String& message) {
    bool cancelled = true;
    const std::map<std::string, std::function<bool()>> forms = {
        {"OK", [&] { return MessageOK(nullptr, "title", message, false, icon); }},
        {"OKCancel", [&] { return MessageOKCancel(nullptr, "title", message, OKCancelFocus{1}, true, icon); }},
        {"YesNo", [&] { return MessageYesNo(nullptr, "title", message, YesNoFocus{1}, false, icon); }},
        {"YesNoCancel",
         [&] { return MessageYesNoCancel(cancelled, nullptr, "title", message, YesNoCancelFocus{2}, false, icon); }},
        {"RetryCancel",
         [&] { return MessageRetryCancel(nullptr, "title", message, RetryCancelFocus{1}, false, icon); }},
        {"UTF16",
         [&] {
             const shared_array<unsigned short> units = message.Unicode();
             std::vector<unsigned short> vector;
             for (std::size_t i = 0; units[i] != 0; ++i) {
                 vector.push_back(units[i]);
             }
             MessageOK(nullptr, {}, vector, {0x41}, false, icon);
             return true;
         }},
    };
    std::printf("answer %s\n", forms.at(form)() ? "true" : "false");
    if (form == "YesNoCancel") {
        std::printf("cancelled %s\n", cancelled ? "true" : "false");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fputs("usage: MessageBoxDriver FORM ICON MESSAGE [PRESS]\n", stderr);
        return 2;
    }
    alarm(20);  // a panel that nobody answers must not stay for ever
    pressed = argc > 4 ? argv[4] : "";
    const id pool = cv::send<id>(cv::send<id>(cv::classNamed("NSAutoreleasePool"), "alloc"), "init");
    cv::classNamed("NSAlert");  // AppKit is there from here on, if there is a display
    watchForPanel();
    const bool invalid = std::strcmp(argv[3], "(invalid UTF-8)") == 0;
    show(argv[1], static_cast<IconType>(std::atoi(argv[2])), invalid ? "\xFF\xFE" : argv[3]);
    cv::send<void>(pool, "drain");
    return 0;
}
