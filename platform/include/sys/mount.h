#pragma once

// A Mac declares statfs here. `#include_next` is an extension of the compilers, which they only warn of outside of
// system headers.
#pragma GCC system_header

#include_next <sys/mount.h>
#include <sys/vfs.h>
