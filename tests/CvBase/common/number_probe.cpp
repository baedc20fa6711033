// Prints what this process, in its locale, makes of numbers.
//
//   number_probe [--setlocale] TEXT...
//
// First 1234.5 with two decimals, then for each TEXT what ToDouble (in thousandths) and ToInt read, or "failed". With
// --setlocale, the C library follows the environment as well.

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "CvBase/common/common_string.h"

int main(int argc, char** argv) {
    int next = 1;
    if (next < argc && std::strcmp(argv[next], "--setlocale") == 0) {
        std::setlocale(LC_NUMERIC, "");
        ++next;
    }
    std::printf("%s\n", String::Number(1234.5, 2).CStr());
    for (; next < argc; ++next) {
        const String text(argv[next]);
        bool isDouble = false;
        bool isInt = false;
        const long thousandths = std::lround(text.ToDouble(&isDouble) * 1000);
        const int integer = text.ToInt(&isInt);
        std::printf("%s %s\n", isDouble ? String::Number(thousandths).CStr() : "failed",
                    isInt ? String::Number(integer).CStr() : "failed");
    }
    return 0;
}
