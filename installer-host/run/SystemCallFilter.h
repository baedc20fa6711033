#pragma once

#include "platform/Descriptor.h"

namespace host {

/// The filter of system calls that the bundle's code runs under, as bubblewrap takes it (--seccomp): a file that holds
/// the compiled filter, at its start. Refused are the calls that reach out of a sandbox or deep into the kernel, and
/// all that are newer than this program; whatever an installation needs of the others passes. A program for another
/// processor, such as a 32-bit one on a 64-bit machine, is ended by its first call.
///
/// Throws Failure (RootNotMade) when the filter cannot be made.
cv::Descriptor systemCallFilter();

}  // namespace host
