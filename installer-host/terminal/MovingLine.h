#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace host {

/// Shows what is being done and for how long, in a line on standard error that moves, once this object is a second old.
/// The line is gone without a trace when the object is. There is none where standard error is no terminal (Terminal.h),
/// in the background, or while another object of this class shows its own: the first one made is the one that shows.
/// A thread of its own keeps the line moving, so whoever works need not care. A child process made by fork() shows
/// none.
///
///     MovingLine line("copying");
///     line.show("copying: 1200 files");
class MovingLine {
public:
    /// `what` is plain text that fits one line; what does not fit the terminal's width is cut.
    explicit MovingLine(const std::string& what) : MovingLine(what, std::chrono::seconds(0)) {}
    ~MovingLine();
    MovingLine(const MovingLine&) = delete;
    MovingLine& operator=(const MovingLine&) = delete;

    /// Shows something else from now on; the time goes on.
    void show(const std::string& what);

protected:
    /// Where nobody watches, a message says every `plainEvery` how far it is; 0: never.
    MovingLine(const std::string& what, std::chrono::seconds plainEvery);
};

/// The same for work of a known number of parts, with a bar: "| [#####     ] 80 of 162 cases, 1 failed, 12 s". Where
/// standard error is no terminal, a message says the same in plain words every 30 seconds.
class ProgressLine : public MovingLine {
public:
    /// `parts` is the plural of what is counted: "cases". `total` may be 0.
    ProgressLine(const std::string& parts, std::size_t total);

    /// `note`, for example "1 failed", stands after the count; empty: nothing does.
    void show(std::size_t done, const std::string& note = "");

private:
    std::string parts_;
    std::size_t total_;
};

}  // namespace host
