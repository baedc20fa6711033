// cv-alert: shows one alert on the display and answers which button was pressed. Started by the port (PanelAlert.cpp),
// with the socket on which the request comes, and the answer goes, as standard input (AlertMessage.h).

#include <fcntl.h>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

#include "platform/Alert/AlertMessage.h"
#include "platform/Alert/cv-alert/AlertWindow.h"
#include "platform/Report.h"

namespace {

constexpr int SOCKET = STDIN_FILENO;

/// Whatever is opened later must not get the place of a standard stream that is closed, and messages with it.
void fillStandardStreams() {
    int file = open("/dev/null", O_RDWR | O_CLOEXEC);
    while (file >= 0 && file <= STDERR_FILENO) {
        file = dup(file);
    }
}

/// What a toolkit finds fault with in its surroundings (no theme, no accessibility bus) is not the asking program's
/// business.
void logFaultsOnly(const char* domain, GLogLevelFlags level, const char* message, gpointer) {
    if ((level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL)) != 0) {
        g_log_default_handler(domain, level, message, nullptr);
    }
}

/// Something happens on the socket while the alert is up: the program that asked has ended, or given up.
gboolean endWithTheProgram(int, GIOCondition, gpointer) {
    _exit(1);
}

/// The answer; nothing when there is no display.
std::optional<std::size_t> ask(const cv::Alert& alert) {
    g_set_prgname("cv-alert");
    g_log_set_default_handler(logFaultsOnly, nullptr);
    if (!gtk_init_check(nullptr, nullptr)) {
        return std::nullopt;
    }
    constexpr int ANYTHING = G_IO_IN | G_IO_HUP | G_IO_ERR;
    g_unix_fd_add(SOCKET, static_cast<GIOCondition>(ANYTHING), endWithTheProgram, nullptr);
    return cv::askInWindow(alert);
}

}  // namespace

int main() {
    fillStandardStreams();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    try {
        const std::optional<cv::Alert> alert = cv::readAlert(SOCKET);
        if (alert) {
            cv::writeAnswer(SOCKET, ask(*alert));
        }
    } catch (const std::exception& fault) {
        cv::report("cv-alert", fault.what());
        return 1;
    }
    _exit(0);  // nothing is left to do, and the toolkit's libraries would take their time
}
