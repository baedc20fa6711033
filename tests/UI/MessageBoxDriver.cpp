// Shows one message box and prints what the program gets:
//
//     MessageBoxDriver FORM ICON MESSAGE

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "CvBase/Mac/MessageSend.h"
#include "UI/Native/MessageBox.h"

namespace {

using namespace UI::Native;

void showUtf16(const String& message, IconType icon) {
    const shared_array<unsigned short> units = message.Unicode();
    std::vector<unsigned short> vector;
    for (std::size_t i = 0; units[i] != 0; ++i) {
        vector.push_back(units[i]);
    }
    MessageOK(nullptr, {}, vector, {0x41}, false, icon);
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
        {"UTF16", [&] { return showUtf16(message, icon), true; }},
    };
    std::printf("answer %s\n", forms.at(form)() ? "true" : "false");
    if (form == "YesNoCancel") {
        std::printf("cancelled %s\n", cancelled ? "true" : "false");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: MessageBoxDriver FORM ICON MESSAGE\n", stderr);
        return 2;
    }
    const id pool = cv::send<id>(cv::send<id>(cv::classNamed("NSAutoreleasePool"), "alloc"), "init");
    const bool invalid = std::strcmp(argv[3], "(invalid UTF-8)") == 0;
    show(argv[1], static_cast<IconType>(std::stoi(argv[2])), invalid ? "\xFF\xFE" : argv[3]);
    cv::send<void>(pool, "drain");
    return 0;
}
