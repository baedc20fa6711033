#pragma once

#include <mutex>
#include <string_view>

namespace host {

/// What is on standard error: the one state that Terminal.cpp and MovingLine.cpp share. All members but the mutex are
/// used while it is locked.
class Screen {
public:
    static Screen& instance();

    std::mutex mutex;

    /// Whether a line may move here.
    bool isWatched() const;

    /// Puts `text` into the moving line, unless it may not be there now.
    void draw(std::string_view text);

    /// Takes the moving line away.
    void erase();

    /// Writes what stays.
    void writeText(std::string_view text);

    /// Counts the objects of class Still.
    void changeStills(int by);

    /// From now on nothing moves, and nothing is told of what is going on.
    void keepStill() { keptStill_ = true; }
    bool isKeptStill() const { return keptStill_; }

    /// Whether this process is a fork() of the one that the moving line belongs to.
    bool isChild() const { return isChild_; }

private:
    Screen();

    int stills_ = 0;
    bool keptStill_ = false;
    bool isChild_ = false;
    bool shown_ = false;         ///< the moving line is on the screen
    bool isAtLineStart_ = true;  ///< what was written last ended a line
};

}  // namespace host
