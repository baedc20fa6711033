#include "installer-host/Activity.h"

#include <new>
#include <utility>

#include "installer-host/EventLog.h"
#include "installer-host/Message.h"
#include "installer-host/report/Text.h"

namespace host {

Activity::Activity(std::string what) : what_(std::move(what)), line_(what_) {
    logEvent("begins", what_);
    remark(Talk::Verbose, what_);
}

Activity::~Activity() {
    try {
        tellEnd();
    } catch (const std::bad_alloc&) {
        // The work itself may have what it needs.
    }
}

void Activity::tellEnd() const {
    const auto time = std::chrono::steady_clock::now() - began_;
    const std::string end = what_ + ": " + (result_.empty() ? "" : result_ + ", ") +
                            secondsText(std::chrono::duration_cast<std::chrono::milliseconds>(time));
    logEvent("ends", end);
    remark(Talk::Detailed, end);
}

}  // namespace host
