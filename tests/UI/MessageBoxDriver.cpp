// Shows one message box and says what the user saw and what the program got:
//
//     MessageBoxDriver FORM ICON MESSAGE [PRESS [SCREENSHOT]]
//
// When the panel is up, prints a line for each text and each button in it. Then, for PRESS (the title of a button, or
// TITLE/N for the N-th of that title), moves the mouse there and presses it, as a user does, after taking a picture of
// the whole screen. At the end, prints the answer.

#include <dlfcn.h>
#include <spawn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "UI/Native/MessageBox.h"
#include "CvBase/Mac/MessageSend.h"

extern char** environ;

namespace {

using namespace UI::Native;

/// AppKit's CGFloat.
using Coordinate = std::conditional_t<sizeof(void*) == 8, double, float>;

struct Point {
    Coordinate x, y;
};
struct Rect {
    Point origin;
    Coordinate width, height;
};

struct Request {
    std::string press, screenshot;
};
Request request;

std::string text(id string) {
    const char* const bytes = cv::send<const char*>(string, "UTF8String");
    return bytes == nullptr ? "" : bytes;
}

bool isKindOf(id object, const char* className) {
    return cv::send<BOOL>(object, "isKindOfClass:", objc_lookUpClass(className));
}

void forEachView(id view, const std::function<void(id)>& visit) {
    visit(view);
    const id children = cv::send<id>(view, "subviews");
    for (cv::UInteger i = 0; i < cv::send<cv::UInteger>(children, "count"); ++i) {
        forEachView(cv::send<id>(children, "objectAtIndex:", i), visit);
    }
}

/// The middle of a view on the screen, from its upper left corner as the X server counts.
Point middleOnScreen(id view, id window) {
    const Rect inWindow =
        cv::send<Rect>(view, "convertRect:toView:", cv::send<Rect>(view, "bounds"), static_cast<id>(nullptr));
    const Point base{inWindow.origin.x + inWindow.width / 2, inWindow.origin.y + inWindow.height / 2};
    const Point onScreen = cv::send<Point>(window, "convertBaseToScreen:", base);
    const Coordinate screenHeight = cv::send<Rect>(cv::send<id>(window, "screen"), "frame").height;
    return {onScreen.x, screenHeight - onScreen.y};
}

void inBackground(const std::string& script) {
    const char* const arguments[] = {"sh", "-c", script.c_str(), nullptr};
    pid_t child = 0;
    posix_spawnp(&child, "sh", nullptr, nullptr, const_cast<char**>(arguments), environ);
}

/// The commands that press the mouse at a place until this program has its answer: on a busy machine, the panel may not
/// be drawn when they first try.
std::string pressScript(Point place) {
    std::string script = "exec 2>/dev/null\nsleep 0.5\n";
    if (!request.screenshot.empty()) {
        script += "import -window root '" + request.screenshot + "'\n";
    }
    const std::string position =
        std::to_string(static_cast<int>(place.x)) + " " + std::to_string(static_cast<int>(place.y));
    return script + "while kill -0 " + std::to_string(getpid()) + "; do\nxdotool mousemove " + position +
           " mousedown 1 sleep 0.2 mouseup 1\nsleep 0.5\ndone\n";
}

/// Called by the run loop of the modal panel.
void describePanel(id, SEL) {
    const id application = cv::send<id>(cv::classNamed("NSApplication"), "sharedApplication");
    const id window = cv::send<id>(application, "modalWindow");
    std::map<std::string, int> seen;
    forEachView(cv::send<id>(window, "contentView"), [&](id view) {
        if (isKindOf(view, "NSButton") && cv::send<BOOL>(view, "isBordered")) {  // the icon is a button without border
            const std::string title = text(cv::send<id>(view, "title"));
            std::printf("button %s\n", title.c_str());
            const std::string numbered = title + "/" + std::to_string(++seen[title]);
            if (request.press == numbered || (request.press == title && seen[title] == 1)) {
                inBackground(pressScript(middleOnScreen(view, window)));
            }
        } else if (isKindOf(view, "NSTextField")) {
            if (const std::string shown = text(cv::send<id>(view, "stringValue")); !shown.empty()) {
                std::printf("text %s\n", shown.c_str());
            }
        }
    });
    std::fflush(stdout);
}

/// Has describePanel called as soon as a modal panel runs.
void watchForPanel() {
    const Class watcherClass =
        objc_allocateClassPair(reinterpret_cast<Class>(cv::classNamed("NSObject")), "PanelWatcher", 0);
    class_addMethod(watcherClass, sel_registerName("describePanel"),
                    reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(describePanel)), "v@:");
    objc_registerClassPair(watcherClass);
    const id watcher = cv::send<id>(cv::send<id>(reinterpret_cast<id>(watcherClass), "alloc"), "init");
    const auto* const mode = static_cast<const id*>(dlsym(RTLD_DEFAULT, "NSModalPanelRunLoopMode"));
    if (mode == nullptr) {
        return;  // there is no AppKit
    }
    const id modes = cv::send<id>(cv::classNamed("NSArray"), "arrayWithObject:", *mode);
    cv::send<void>(cv::send<id>(cv::classNamed("NSRunLoop"), "currentRunLoop"),
                   "performSelector:target:argument:order:modes:", sel_registerName("describePanel"), watcher,
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
    const bool answer = forms.at(form)();
    std::printf("answer %s\n", answer ? "true" : "false");
    if (form == "YesNoCancel") {
        std::printf("cancelled %s\n", cancelled ? "true" : "false");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fputs("usage: MessageBoxDriver FORM ICON MESSAGE [PRESS [SCREENSHOT]]\n", stderr);
        return 2;
    }
    alarm(20);  // a panel that nobody answers must not stay for ever
    request = {argc > 4 ? argv[4] : "", argc > 5 ? argv[5] : ""};
    const id pool = cv::send<id>(cv::send<id>(cv::classNamed("NSAutoreleasePool"), "alloc"), "init");
    cv::classNamed("NSAlert");  // AppKit is there from here on, if there is a display
    watchForPanel();
    const bool invalid = std::strcmp(argv[3], "(invalid UTF-8)") == 0;
    show(argv[1], static_cast<IconType>(std::atoi(argv[2])), invalid ? "\xFF\xFE" : argv[3]);
    cv::send<void>(pool, "drain");
    return 0;
}
