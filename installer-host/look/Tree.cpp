#include "installer-host/look/Tree.h"

#include <sys/stat.h>

namespace host {

const Details& detailsOf(const Entry& entry) {
    static const Details none;
    return entry.details == nullptr ? none : *entry.details;
}

bool isSameObject(const Entry& a, const Entry& b) {
    const Identity& one = a.status.identity;
    const Identity& other = b.status.identity;
    const bool isSameType = (a.status.mode & S_IFMT) == (b.status.mode & S_IFMT);
    return a.hasStatus && b.hasStatus && isSameType && one.device == other.device && one.inode == other.inode &&
           one.birth == other.birth;
}

bool isUntouched(const Entry& before, const Entry& after) {
    const Status& a = before.status;
    const Status& b = after.status;
    return isSameObject(before, after) && a.changed == b.changed && a.modified == b.modified && a.size == b.size &&
           a.mode == b.mode && a.owner == b.owner && a.group == b.group;
}

}  // namespace host
