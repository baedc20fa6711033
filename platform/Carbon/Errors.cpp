#include "platform/Carbon/Errors.h"

#include <cerrno>
#include <cstring>

namespace cv {

OSErr fileError(int errnoValue) {
    switch (errnoValue) {
        case ENOENT:
            return fnfErr;
        case ENOTDIR:
            return dirNFErr;
        case EACCES:
        case EPERM:
            return afpAccessDenied;
        case EROFS:
            return wPrErr;
        case ENOSPC:
        case EDQUOT:
            return dskFulErr;
        case EXDEV:
            return diffVolErr;
        case ENAMETOOLONG:
            return bdNamErr;
        case ENOTSUP:
        case ENOSYS:
            return errFSUnknownCall;
        case ENOMEM:
            return memFullErr;
        default:
            return ioErr;
    }
}

const char* errorName(int errnoValue) {
    const char* const text = strerrordesc_np(errnoValue);
    return text != nullptr ? text : "unknown error";
}

}  // namespace cv
