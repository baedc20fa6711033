// A whole program that has ICU and nothing else of CvBase's libraries.

#include <unicode/uversion.h>

int main() {
    UVersionInfo version = {};
    u_getVersion(version);
    return version[0] == U_ICU_VERSION_MAJOR_NUM ? 0 : 1;
}
