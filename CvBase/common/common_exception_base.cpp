#include "CvBase/common/common_exception_base.h"

namespace Exception {

Base::Base(const String& message) : message_(message) {}

Base::~Base() = default;

String Base::ToString() const {
    const String site = String("%1 (%2): Thrown, GetLastError(): %3\n").Arg(sourceFile_).Arg(line_).Arg(0);
    return String("Base:\n\t") + message_ + "\n\t" + site;
}

void Base::SetThrowSite(const char* unit, int line) {
    sourceFile_ = unit;
    line_ = line;
    osErrorAtThrow_ = 0;
}

}  // namespace Exception
