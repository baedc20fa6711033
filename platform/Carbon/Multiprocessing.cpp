#include <Carbon/Multiprocessing.h>
#include <unistd.h>

ItemCount MPProcessors() {
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? static_cast<ItemCount>(count) : 0;
}
