#include "platform/StoreFailures.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

namespace cv {

namespace {

class Record {
public:
    void add(StoreFailure failure) {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto earlier = find(failure.what);
        if (earlier == failures_.end() || failure.wasToBeStored || !earlier->wasToBeStored) {
            erase(earlier);
            failures_.push_back(std::move(failure));
        }
    }

    void forget(const std::string& what) {
        const std::lock_guard<std::mutex> lock(mutex_);
        erase(find(what));
    }

    std::vector<StoreFailure> all() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return failures_;
    }

private:
    using Iterator = std::vector<StoreFailure>::iterator;

    Iterator find(const std::string& what) {
        return std::find_if(failures_.begin(), failures_.end(),
                            [&](const StoreFailure& failure) { return failure.what == what; });
    }

    void erase(Iterator failure) {
        if (failure != failures_.end()) {
            failures_.erase(failure);
        }
    }

    std::mutex mutex_;
    std::vector<StoreFailure> failures_;  // one for each object
};

/// Lives as long as the process: a store may fail while other objects are destroyed.
Record& record() {
    static auto* const instance = new Record;
    return *instance;
}

/// The calls that fail to store are C functions and let nothing out.
template <typename Work>
void unlessOutOfMemory(Work work) noexcept {
    try {
        work();
    } catch (const std::exception&) {
        // As StoreFailures.h says, only the record is missing.
    }
}

}  // namespace

void storeFailed(const char* what, const char* reason) noexcept {
    unlessOutOfMemory([=] { record().add({what, reason, true}); });
}

void lookupFailed(const char* what, const char* reason) noexcept {
    unlessOutOfMemory([=] { record().add({what, reason, false}); });
}

void storeSucceeded(const char* what) noexcept {
    unlessOutOfMemory([=] { record().forget(what); });
}

std::vector<StoreFailure> storeFailures() {
    return record().all();
}

}  // namespace cv
