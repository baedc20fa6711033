#include "platform/StoreFailures.h"

#include <algorithm>
#include <exception>
#include <mutex>

namespace cv {

namespace {

struct Record {
    std::mutex mutex;
    std::vector<StoreFailure> failures;

    void forget(const char* what) {
        failures.erase(std::remove_if(failures.begin(), failures.end(),
                                      [&](const StoreFailure& failure) { return failure.what == what; }),
                       failures.end());
    }
};

/// Lives as long as the process: a store may fail while other objects are destroyed.
Record& record() {
    static auto* const instance = new Record;
    return *instance;
}

}  // namespace

void storeFailed(const char* what, const char* reason) noexcept {
    try {
        const std::lock_guard<std::mutex> lock(record().mutex);
        record().forget(what);
        record().failures.push_back({what, reason});
    } catch (const std::exception&) {
        // The calls that fail to store are C functions and let nothing out.
    }
}

void storeSucceeded(const char* what) noexcept {
    try {
        const std::lock_guard<std::mutex> lock(record().mutex);
        record().forget(what);
    } catch (const std::exception&) {
        // As above.
    }
}

std::vector<StoreFailure> storeFailures() {
    const std::lock_guard<std::mutex> lock(record().mutex);
    return record().failures;
}

}  // namespace cv
