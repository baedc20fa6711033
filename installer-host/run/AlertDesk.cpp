#include "installer-host/run/AlertDesk.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "installer-host/EventLog.h"
#include "installer-host/Message.h"
#include "platform/Alert/AlertMessage.h"
#include "platform/Alert/ConsoleAlert.h"
#include "platform/Alert/PanelAlert.h"

namespace host {

namespace {

using nlohmann::json;

/// Code that shows alerts without end must not fill the report.
constexpr int MOST_ALERTS = 100;

struct Answer {
    std::size_t button;
    const char* by;
};

/// The alert as it may be shown on a terminal.
cv::Alert forTerminal(const cv::Alert& alert) {
    cv::Alert shown = alert;
    shown.message = printable(alert.message);
    for (std::string& button : shown.buttons) {
        button = printable(button);
    }
    return shown;
}

/// The process that asks the user.
class Asker {
public:
    Asker(int socket, int tells, std::string title, std::string panelProgram)
        : socket_(socket), tells_(tells), title_(std::move(title)), panelProgram_(std::move(panelProgram)) {
        setenv("CV_ALERT_TITLE", title_.c_str(), 1);
    }

    void serve() {
        for (int i = 0; i < MOST_ALERTS; ++i) {
            const std::optional<cv::Alert> alert = cv::readAlert(socket_);
            if (!alert) {
                return;
            }
            tell({{"title", title_}, {"text", alert->message}, {"buttons", alert->buttons}});
            const Answer answer = ask(*alert);
            tell({{"answer", alert->buttons[answer.button]}, {"by", answer.by}});
            cv::writeAnswer(socket_, answer.button);
        }
        say("the bundle's code shows more than " + std::to_string(MOST_ALERTS) + " alerts; no more are shown");
    }

private:
    void tell(const json& what) const {
        static_cast<void>(cv::writeAll(tells_, what.dump(-1, ' ', false, json::error_handler_t::replace) + "\n"));
    }

    Answer ask(const cv::Alert& alert) const {
        if (cv::displayIsNamed()) {
            if (const std::optional<std::size_t> button = askOnDisplay(alert)) {
                return {*button, "user"};
            }
        }
        const cv::Alert shown = forTerminal(alert);
        say(title_ + ":");
        if (isatty(STDIN_FILENO) == 1) {
            return {cv::askOnConsole(shown), "console"};
        }
        const std::size_t button = cv::unansweredButton(alert);
        say(shown.message + "\nThere is no display and no terminal to ask; taking " + shown.buttons[button]);
        return {button, "nobody"};
    }

    /// A panel that was lost is one that nobody answered.
    std::optional<std::size_t> askOnDisplay(const cv::Alert& alert) const {
        try {
            return cv::askOnPanel(alert, panelProgram_);
        } catch (const cv::AlertFault& fault) {
            say(std::string("the alert was lost before it was answered: ") + fault.what());
            return std::nullopt;
        }
    }

    int socket_;
    int tells_;
    std::string title_, panelProgram_;
};

[[noreturn]] void becomeAsker(Asker&& asker, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(1);
    }
    try {
        asker.serve();
    } catch (const std::exception& fault) {
        say(std::string("no alert can be shown any more: ") + fault.what());
    }
    _exit(0);
}

}  // namespace

AlertDesk::AlertDesk(const std::string& bundle, std::string panelProgram)
    : title_("Alert of " + printable(std::filesystem::path(bundle).filename().string())),
      panelProgram_(std::move(panelProgram)) {
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    ours_ = cv::Descriptor(ends[0]);
    theirs_ = cv::Descriptor(ends[1]);
}

std::vector<Watcher> AlertDesk::watchers() {
    return {{ours_.get(), [this] { return beginToAsk(); }}, {told_.read.get(), [this] { return hear(); }}};
}

/// Something is asked; from now on the process that asks the user listens there.
Watching AlertDesk::beginToAsk() {
    const pid_t parent = getpid();
    still_.emplace();
    pid_ = fork();
    if (pid_ == 0) {
        theirs_ = cv::Descriptor();
        becomeAsker(Asker(ours_.get(), told_.write.get(), title_, panelProgram_), parent);
    }
    ours_ = cv::Descriptor();
    theirs_ = cv::Descriptor();
    return Watching::Stop;
}

Watching AlertDesk::hear() {
    std::array<char, 65536> buffer;
    const ssize_t count = read(told_.read.get(), buffer.data(), buffer.size());
    if (count <= 0) {
        return count < 0 && (errno == EAGAIN || errno == EINTR) ? Watching::GoOn : Watching::Stop;
    }
    line_.append(buffer.data(), static_cast<std::size_t>(count));
    for (std::size_t end; (end = line_.find('\n')) != std::string::npos; line_.erase(0, end + 1)) {
        hearLine(line_.substr(0, end));
    }
    return Watching::GoOn;
}

void AlertDesk::hearLine(const std::string& line) {
    const json told = json::parse(line);
    if (told.contains("text")) {
        records_.push_back({told["title"], told["text"], told["buttons"], std::nullopt, ""});
        logEvent("alert", records_.back().text);
    } else if (!records_.empty()) {
        records_.back().answer = told["answer"].get<std::string>();
        records_.back().answeredBy = told["by"];
        logEvent("answer", *records_.back().answer + " by " + records_.back().answeredBy);
    }
}

void AlertDesk::end() {
    if (pid_ <= 0) {
        return;
    }
    kill(pid_, SIGKILL);
    reap(pid_);
    pid_ = 0;
    still_.reset();
    told_.write = cv::Descriptor();
}

}  // namespace host
