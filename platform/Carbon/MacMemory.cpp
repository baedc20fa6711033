#include <Carbon/MacMemory.h>

#include <cstdlib>

Ptr NewPtr(Size byteCount) {
    return byteCount < 0 ? nullptr : static_cast<Ptr>(std::malloc(static_cast<std::size_t>(byteCount)));
}

void DisposePtr(Ptr p) {
    std::free(p);
}
