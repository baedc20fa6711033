#include "platform/AppKit/Display.h"

#include <dlfcn.h>

#include <cstdlib>

namespace cv {

bool displayAnswers() {
    const char* const name = std::getenv("DISPLAY");
    if (name == nullptr || *name == '\0') {
        return false;
    }
    void* const x11 = dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL);
    if (x11 == nullptr) {
        return false;
    }
    const auto open = reinterpret_cast<void* (*)(const char*)>(dlsym(x11, "XOpenDisplay"));
    const auto close = reinterpret_cast<int (*)(void*)>(dlsym(x11, "XCloseDisplay"));
    void* const display = open != nullptr && close != nullptr ? open(nullptr) : nullptr;
    if (display != nullptr) {
        close(display);
    }
    dlclose(x11);
    return display != nullptr;
}

}  // namespace cv
