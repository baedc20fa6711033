#include "installer-host/terminal/MovingLine.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "installer-host/Message.h"
#include "installer-host/terminal/Screen.h"
#include "installer-host/terminal/Terminal.h"

namespace host {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// The line that shows, and the thread that keeps it moving.
class Mover {
public:
    static Mover& instance() {
        static Mover& mover = *new Mover;  // never destroyed: in a fork() its thread is not there to be joined
        return mover;
    }

    /// Begins to show the line of `owner`, if there is none yet.
    void begin(const MovingLine* owner, const std::string& what, std::chrono::seconds plainEvery) {
        const std::lock_guard lock(mutex());
        const bool isMoving = Screen::instance().isWatched();
        const bool isTelling = plainEvery != 0s && !Screen::instance().isKeptStill();
        if (owner_ != nullptr || Screen::instance().isChild() || !(isMoving || isTelling)) {
            return;
        }
        what_ = what;
        began_ = Clock::now();
        ended_ = false;
        try {
            thread_ = std::thread(isMoving ? &Mover::move : &Mover::tell, this, plainEvery);
            owner_ = owner;
        } catch (const std::system_error&) {
            // A system without room for a thread does without the line.
        }
    }

    void change(const MovingLine* owner, const std::string& what) {
        const std::lock_guard lock(mutex());
        if (owner_ == owner) {
            what_ = what;
        }
    }

    void end(const MovingLine* owner) {
        {
            const std::lock_guard lock(mutex());
            if (owner_ != owner || Screen::instance().isChild()) {
                return;
            }
            ended_ = true;
        }
        isOver_.notify_one();
        thread_.join();
        const std::lock_guard lock(mutex());
        Screen::instance().erase();
        owner_ = nullptr;
    }

private:
    static std::mutex& mutex() { return Screen::instance().mutex; }

    std::string text() const {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - began_).count();
        return what_ + ", " + std::to_string(seconds) + " s";
    }

    /// Draws the line until it is to end.
    void move(std::chrono::seconds) {
        static constexpr std::array<char, 4> FRAMES{'|', '/', '-', '\\'};
        std::unique_lock lock(mutex());
        auto next = began_ + 1s;
        for (std::size_t frame = 0; !isOver_.wait_until(lock, next, [this] { return ended_; }); ++frame) {
            Screen::instance().draw(FRAMES[frame % FRAMES.size()] + (" " + text()));
            next = Clock::now() + 100ms;
        }
    }

    /// Says now and then how far it is.
    void tell(std::chrono::seconds plainEvery) {
        std::unique_lock lock(mutex());
        for (auto next = began_ + plainEvery; !isOver_.wait_until(lock, next, [this] { return ended_; });
             next += plainEvery) {
            const std::string said = text();
            lock.unlock();
            say(said);
            lock.lock();
        }
    }

    const MovingLine* owner_ = nullptr;
    std::string what_;
    Clock::time_point began_;
    bool ended_ = false;
    std::condition_variable isOver_;
    std::thread thread_;
};

/// "[#####     ] ".
std::string barText(std::size_t done, std::size_t total) {
    constexpr std::size_t WIDTH = 20;
    const std::size_t filled = total == 0 ? 0 : WIDTH * std::min(done, total) / total;
    return "[" + std::string(filled, '#') + std::string(WIDTH - filled, ' ') + "] ";
}

}  // namespace

MovingLine::MovingLine(const std::string& what, std::chrono::seconds plainEvery) {
    Mover::instance().begin(this, what, plainEvery);
}

MovingLine::~MovingLine() {
    Mover::instance().end(this);
}

void MovingLine::show(const std::string& what) {
    Mover::instance().change(this, what);
}

ProgressLine::ProgressLine(const std::string& parts, std::size_t total)
    : MovingLine("", 30s), parts_(parts), total_(total) {
    show(0);
}

void ProgressLine::show(std::size_t done, const std::string& note) {
    const std::string count = std::to_string(done) + " of " + std::to_string(total_) + " " + parts_;
    MovingLine::show((isWatched() ? barText(done, total_) : "") + count + (note.empty() ? "" : ", " + note));
}

}  // namespace host
