#include "tests/support/MallocFailures.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

// The C library's own functions, by the names under which they remain reachable.
extern "C" {
void* __libc_malloc(std::size_t size) noexcept;
void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
void* __libc_realloc(void* block, std::size_t size) noexcept;
}

namespace {

struct Plan {
    bool isArmed;
    unsigned long tried;
    unsigned long firstFailure;
    unsigned long failures;
};

// In the memory that every thread has from its start, because asking for it must not need malloc.
__attribute__((tls_model("initial-exec"))) thread_local Plan g_plan{};

bool mayPass() {
    if (!g_plan.isArmed) {
        return true;
    }
    const unsigned long number = g_plan.tried++;
    if (number < g_plan.firstFailure || number - g_plan.firstFailure >= g_plan.failures) {
        return true;
    }
    errno = ENOMEM;
    return false;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
    return mayPass() ? __libc_malloc(size) : nullptr;
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
    return mayPass() ? __libc_calloc(count, size) : nullptr;
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) noexcept {
    return mayPass() ? __libc_realloc(block, size) : nullptr;
}

}  // extern "C"

namespace test {

void failMalloc(unsigned long passes, unsigned long failures) {
    g_plan = {true, 0, passes, failures};
}

unsigned long endMallocFailures() {
    g_plan.isArmed = false;
    return g_plan.tried;
}

}  // namespace test
