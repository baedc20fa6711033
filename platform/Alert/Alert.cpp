#include "platform/Alert/Alert.h"

#include <sys/socket.h>

#include <charconv>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>

#include "platform/Alert/AlertMessage.h"
#include "platform/Alert/ConsoleAlert.h"
#include "platform/Alert/PanelAlert.h"
#include "platform/Companion.h"
#include "platform/Report.h"

namespace cv {

namespace {

/// The user is asked one thing at a time.
std::mutex g_askingMutex;

int socketOption(int socket, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(socket, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

/// The socket that a variable's value names. Throws AlertFault when it names none: to write to whatever else the
/// program has open there would do harm.
int socketNamed(std::string_view value) {
    int socket = -1;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), socket);
    const bool isNumber = error == std::errc() && end == value.data() + value.size() && socket >= 0;
    if (!isNumber || socketOption(socket, SO_DOMAIN) != AF_UNIX || socketOption(socket, SO_TYPE) != SOCK_STREAM) {
        throw AlertFault("CV_ALERT_SOCKET is '" + std::string(value) +
                         "', which is not the number of a local stream socket");
    }
    return socket;
}

/// Asks whoever has a screen for it; nothing when nobody has.
std::optional<std::size_t> askOnScreen(const Alert& alert) {
    const char* const socket = std::getenv("CV_ALERT_SOCKET");
    if (socket == nullptr && !displayIsNamed()) {
        return std::nullopt;
    }
    if (!fitsRequest(alert)) {
        report("alert", "the alert is too long for the display; asking on the terminal");
        return std::nullopt;
    }
    std::optional<std::size_t> answer;
    if (socket != nullptr) {
        answer = askOver(socketNamed(socket), alert);
    }
    return !answer && displayIsNamed() ? askOnPanel(alert, companionPath("cv-alert")) : answer;
}

}  // namespace

std::size_t runAlert(const Alert& alert) {
    const std::lock_guard<std::mutex> lock(g_askingMutex);
    try {
        const std::optional<std::size_t> answer = askOnScreen(alert);
        return answer ? *answer : askOnConsole(alert);
    } catch (const AlertFault& fault) {
        const std::size_t button = unansweredButton(alert);
        report("alert", std::string("lost before it was answered: ") + fault.what() + "; taking '" +
                            alert.buttons[button] + "'");
        return button;
    }
}

}  // namespace cv
