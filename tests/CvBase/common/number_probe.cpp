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
    const bool follows = argc > 1 && std::strcmp(argv[1], "--setlocale") == 0;
    if (follows) {
        std::setlocale(LC_NUMERIC, "");
    }
    std::printf("%s\n", String::Number(1234.5, 2).CStr());
    for (int i = follows ? 2 : 1; i < argc; ++i) {
        bool isDouble = false, isInt = false;
        const long thousandths = std::lround(String(argv[i]).ToDouble(&isDouble) * 1000);
        const int integer = String(argv[i]).ToInt(&isInt);
        std::printf("%s %s\n", isDouble ? String::Number(thousandths).CStr() : "failed",
                    isInt ? String::Number(integer).CStr() : "failed");
    }
    return 0;
}
