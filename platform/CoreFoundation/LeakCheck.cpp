// For builds with the address sanitizer: looks for leaks before Foundation's own handlers run at exit, since these
// forget objects that they do not free.

#include <sanitizer/lsan_interface.h>

#include <cstdlib>

#include "platform/MessageSend.h"

namespace {

// Handlers run in the reverse order of their registration, and a class that has something to forget registers
// Foundation's on its first use.
const bool IS_REGISTERED = [] {
    cv::send<id>(cv::classNamed("NSArray"), "class");
    return std::atexit(&__lsan_do_leak_check) == 0;
}();

}  // namespace
