#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "installer-host/run/ChildProcess.h"

namespace host {

/// What a child process prints, passed on to standard error as text that does nothing to a terminal, each line after
/// "| ", so that it cannot be taken for a message of this program. After a mebibyte the rest is left out.
class ChildOutput {
public:
    /// For ChildOrder::output.
    int childEnd() const { return pipe_.write.get(); }

    /// Passes on what comes. This object must outlive it.
    Watcher watcher();

    /// The last line that came and was not empty.
    const std::string& lastLine() const { return lastLine_; }

private:
    void pass(std::string_view text);
    void keepLastLine(std::string_view text);

    Pipe pipe_;
    std::size_t passed_ = 0;
    bool isAtLineStart_ = true;
    std::string line_, lastLine_;
};

}  // namespace host
