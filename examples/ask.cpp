// Asks a question in a native message box, or on the terminal where there is no display.
//
//     ask QUESTION

#include <cstdio>

#include "CvBase/Mac/AutoreleasePool.h"
#include "CvBase/common/common_string.h"
#include "UI/Native/MessageBox.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: ask QUESTION\n", stderr);
        return 2;
    }
    // The message boxes leave their temporary objects to the caller's pool.
    const cv::AutoreleasePool pool;
    bool cancelled = false;
    const bool yes = UI::Native::MessageYesNoCancel(cancelled, nullptr, "", argv[1], UI::Native::YesNoCancelFocus{0},
                                                    false, UI::Native::IconType{0});
    std::puts(cancelled ? "cancelled" : yes ? "yes" : "no");
    return yes ? 0 : 1;
}
