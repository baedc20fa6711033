#pragma once

// What the calls that take a file reference share.

#include <Carbon/Files.h>
#include <sys/stat.h>

#include "platform/Descriptor.h"

namespace cv {

/// The object that a reference names, held open (O_PATH: its contents are not) for as long as this lives, so that what
/// is looked at and what is changed is one object even when the path is given to another one meanwhile.
class OpenReference {
public:
    /// Opens `ref`, which may be null (paramErr).
    explicit OpenReference(const FSRef* ref);

    /// noErr when the reference's path still leads to its object; only then do the others mean something.
    OSErr error() const { return error_; }
    /// What the system said (errno) where the object is there and could not be opened; 0 otherwise.
    int systemError() const { return systemError_; }
    int descriptor() const { return descriptor_.get(); }
    bool isFolder() const { return S_ISDIR(status_.st_mode); }
    bool isRegularFile() const { return S_ISREG(status_.st_mode); }

private:
    Descriptor descriptor_;
    OSErr error_ = noErr;
    int systemError_ = 0;
    struct stat status_ {};
};

}  // namespace cv
