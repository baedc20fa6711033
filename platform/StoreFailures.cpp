#include "platform/StoreFailures.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <string_view>

namespace cv {

namespace {

/// One failure for each object.
class Record {
public:
    void add(const char* what, const char* reason, bool wasToBeStored) noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto earlier = find(what);
        if (earlier != failures_.end()) {
            if (earlier->wasToBeStored && !wasToBeStored) {
                return;
            }
            failures_.erase(earlier);
        }
        try {
            failures_.push_back({what, reason, wasToBeStored});
        } catch (const std::bad_alloc&) {
            isIncomplete_ = true;
        }
    }

    void forget(const char* what) noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (const auto failure = find(what); failure != failures_.end()) {
            failures_.erase(failure);
        }
    }

    std::vector<StoreFailure> all() {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::vector<StoreFailure> failures = failures_;
        if (isIncomplete_) {
            failures.push_back({"something", "there was not enough memory to store it or to record what it was", true});
        }
        return failures;
    }

private:
    std::vector<StoreFailure>::iterator find(std::string_view what) noexcept {
        return std::find_if(failures_.begin(), failures_.end(),
                            [=](const StoreFailure& failure) { return failure.what == what; });
    }

    std::mutex mutex_;
    std::vector<StoreFailure> failures_;
    bool isIncomplete_ = false;  ///< there was no memory for a failure
};

/// Lives as long as the process, in memory that is always there: a store may fail while other objects are destroyed.
Record& record() {
    alignas(Record) static unsigned char place[sizeof(Record)];
    static auto* const instance = new (place) Record;
    return *instance;
}

}  // namespace

void storeFailed(const char* what, const char* reason) noexcept {
    record().add(what, reason, true);
}

void lookupFailed(const char* what, const char* reason) noexcept {
    record().add(what, reason, false);
}

void storeSucceeded(const char* what) noexcept {
    record().forget(what);
}

std::vector<StoreFailure> storeFailures() {
    return record().all();
}

}  // namespace cv
