#pragma once

#include <string>
#include <string_view>

namespace host {

// The user's terminal. All that this program writes to standard error goes through here, so that a line that moves
// (MovingLine.h) never gets into other text. Any thread may call these functions.

/// Writes to standard error in one piece. A failure is ignored: there is nobody to tell.
void writeError(std::string_view text);

/// While an object of this class lives no line moves, and none is on the screen. For whoever lets somebody else write
/// to the terminal, or writes to standard output.
class Still {
public:
    Still();
    ~Still();
    Still(const Still&) = delete;
    Still& operator=(const Still&) = delete;
};

/// From now on no line moves and no message tells how far some work is, whatever standard error is.
void keepStill();

/// Whether a line may move on standard error: it is a terminal that can take a line back.
bool isWatched();

}  // namespace host
