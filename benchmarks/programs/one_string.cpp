// A whole program that makes one text of CvBase.

#include "CvBase/common/common_string.h"

int main() {
    const String text("text");
    return text.Length() == 4 ? 0 : 1;
}
