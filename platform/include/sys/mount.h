#pragma once

// A Mac declares statfs here.

#include <sys/vfs.h>
#include_next <sys/mount.h>
