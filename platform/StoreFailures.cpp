#include "platform/StoreFailures.h"

#include <algorithm>
#include <mutex>
#include <new>

namespace cv {

namespace {

struct Record {
    std::mutex mutex;
    std::vector<StoreFailure> failures;
    bool isIncomplete = false;  ///< there was no memory for a failure

    void forget(const char* what) {
        failures.erase(std::remove_if(failures.begin(), failures.end(),
                                      [&](const StoreFailure& failure) { return failure.what == what; }),
                       failures.end());
    }
};

/// Lives as long as the process, in memory that is always there: a store may fail while other objects are destroyed.
Record& record() {
    alignas(Record) static unsigned char place[sizeof(Record)];
    static auto* const instance = new (place) Record;
    return *instance;
}

}  // namespace

void storeFailed(const char* what, const char* reason) noexcept {
    const std::lock_guard<std::mutex> lock(record().mutex);
    record().forget(what);
    try {
        record().failures.push_back({what, reason});
    } catch (const std::bad_alloc&) {
        record().isIncomplete = true;
    }
}

void storeSucceeded(const char* what) noexcept {
    const std::lock_guard<std::mutex> lock(record().mutex);
    record().forget(what);
}

std::vector<StoreFailure> storeFailures() {
    const std::lock_guard<std::mutex> lock(record().mutex);
    std::vector<StoreFailure> failures = record().failures;
    if (record().isIncomplete) {
        failures.push_back({"something", "there was not enough memory to store it, nor to remember what it was"});
    }
    return failures;
}

}  // namespace cv
