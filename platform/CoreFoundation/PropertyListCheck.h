#pragma once

#include "platform/CoreFoundation/PropertyList.h"

namespace cv::plist {

/// What is wrong with the bytes; `Fault::none` when libplist can read them safely and without loss. It trusts counts
/// and nesting, and drops text after a NUL and half surrogate pairs, so bytes from outside pass here first.
struct Verdict {
    Parsed::Fault fault = Parsed::Fault::none;
    const char* reason = "";
};

/// Checks every object that can be reached from the root of a binary property list ("bplist00").
Verdict checkBinary(std::string_view bytes);

/// Checks the encoding and the nesting of an XML property list.
Verdict checkXml(std::string_view bytes);

}  // namespace cv::plist
