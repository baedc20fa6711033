#include "installer-host/terminal/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "installer-host/terminal/Screen.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// Whether this process is the one that the user talks to on the terminal. One that has no terminal of its own and was
/// given another's counts as well.
bool isInForeground() {
    const pid_t group = tcgetpgrp(STDERR_FILENO);
    return group < 0 || group == getpgrp();
}

/// How many characters fit into a line of the terminal, without the last one: some terminals go on below after that.
std::size_t widthOfTerminal() {
    constexpr std::size_t USUAL_WIDTH = 80;
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return (isKnown ? size.ws_col : USUAL_WIDTH) - 1;
}

/// The first `width` characters of a text in UTF-8.
std::string_view cutTo(std::string_view text, std::size_t width) {
    std::size_t end = 0;
    for (; end < text.size(); ++end) {
        const bool beginsCharacter = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
        if (beginsCharacter && width-- == 0) {
            break;
        }
    }
    return text.substr(0, end);
}

void write(std::string_view text) {
    static_cast<void>(cv::writeAll(STDERR_FILENO, text));
}

}  // namespace

Screen& Screen::instance() {
    static Screen screen;
    return screen;
}

Screen::Screen() {
    // A child must not wait for a lock that a thread holds which it does not have; and its parent draws, not the child.
    pthread_atfork([] { instance().mutex.lock(); }, [] { instance().mutex.unlock(); },
                   [] {
                       instance().shown_ = false;
                       instance().isChild_ = true;
                       instance().mutex.unlock();
                   });
}

bool Screen::isWatched() const {
    static const bool isTerminal = [] {
        const char* const kind = std::getenv("TERM");
        return isatty(STDERR_FILENO) == 1 && kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
    }();
    return isTerminal && !keptStill_ && !isChild_;
}

void Screen::draw(std::string_view text) {
    if (stills_ == 0 && isAtLineStart_ && isWatched() && isInForeground()) {
        shown_ = true;
        write("\r" + std::string(cutTo(text, widthOfTerminal())) + "\033[K");
    }
}

void Screen::erase() {
    if (shown_) {
        write("\r\033[K");
        shown_ = false;
    }
}

void Screen::writeText(std::string_view text) {
    erase();
    write(text);
    isAtLineStart_ = text.empty() ? isAtLineStart_ : text.back() == '\n';
}

void Screen::changeStills(int by) {
    erase();
    stills_ += by;
}

void writeError(std::string_view text) {
    const std::lock_guard lock(Screen::instance().mutex);
    Screen::instance().writeText(text);
}

Still::Still() {
    const std::lock_guard lock(Screen::instance().mutex);
    Screen::instance().changeStills(1);
}

Still::~Still() {
    const std::lock_guard lock(Screen::instance().mutex);
    Screen::instance().changeStills(-1);
}

void keepStill() {
    const std::lock_guard lock(Screen::instance().mutex);
    Screen::instance().keepStill();
}

bool isWatched() {
    const std::lock_guard lock(Screen::instance().mutex);
    return Screen::instance().isWatched();
}

}  // namespace host
