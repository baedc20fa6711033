#pragma once

#include <chrono>
#include <string>

#include "installer-host/terminal/MovingLine.h"

namespace host {

/// A part of the work, while this object lives: the user sees it in a moving line when it takes long, hears of it when
/// the talk is Verbose and how long it took when it is Detailed (Message.h), and the log has its beginning and its end.
class Activity {
public:
    /// `what` completes "installer-host is ...": "looking at the root".
    explicit Activity(std::string what);
    ~Activity();
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    /// The moving line says `what` from now on.
    void show(const std::string& what) { line_.show(what); }

    /// The end comes with these words: "12 entries".
    void setResult(const std::string& result) { result_ = result; }

private:
    void tellEnd() const;

    std::string what_, result_;
    std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
    MovingLine line_;
};

}  // namespace host
