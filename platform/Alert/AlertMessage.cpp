#include "platform/Alert/AlertMessage.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include "platform/Descriptor.h"

namespace cv {

namespace {

constexpr std::string_view REQUEST_MARK = "CvAlert1";
constexpr std::string_view ANSWER_MARK = "CvAnswr1";
constexpr std::size_t NUMBER_SIZE = 4;
constexpr std::uint32_t CANNOT_SHOW = 0xFFFFFFFF;

void appendNumber(std::string& bytes, std::size_t number) {
    for (std::size_t i = 0; i < NUMBER_SIZE; ++i) {
        bytes += static_cast<char>(number >> (8 * i) & 0xFF);
    }
}

void appendText(std::string& bytes, const std::string& text) {
    appendNumber(bytes, text.size());
    bytes += text;
}

/// Takes a request or an answer apart, from its start to its end.
class Parser {
public:
    explicit Parser(std::string_view bytes) : rest_(bytes) {}

    std::string_view bytes(std::size_t size) {
        if (size > rest_.size()) {
            throw AlertFault("the other side sent too little");
        }
        const std::string_view taken = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return taken;
    }

    std::uint32_t number() {
        std::uint32_t number = 0;
        const std::string_view taken = bytes(NUMBER_SIZE);
        for (std::size_t i = 0; i < NUMBER_SIZE; ++i) {
            number |= std::uint32_t{static_cast<unsigned char>(taken[i])} << (8 * i);
        }
        return number;
    }

    std::string text() { return std::string(bytes(number())); }

    void mark(std::string_view expected) {
        if (bytes(expected.size()) != expected) {
            throw AlertFault("the other side sent something that is not an alert message");
        }
    }

    void end() const {
        if (!rest_.empty()) {
            throw AlertFault("the other side sent too much");
        }
    }

private:
    std::string_view rest_;
};

/// After a call on the socket that failed: waits when it only has to be made again, and throws otherwise.
void waitToRepeat(int socket, short event) {
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
        pollfd wait{socket, event, 0};
        poll(&wait, 1, -1);
    } else if (errno != EINTR) {
        throw AlertFault(errorText(errno));
    }
}

void sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0) {
            waitToRepeat(socket, POLLOUT);
        } else {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }
}

/// As many bytes, or fewer where the other side has closed the socket.
std::string receive(int socket, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t received = 0;
    while (received < size) {
        const ssize_t count = recv(socket, &bytes[received], size - received, 0);
        if (count < 0) {
            waitToRepeat(socket, POLLIN);
        } else if (count == 0) {
            break;
        } else {
            received += static_cast<std::size_t>(count);
        }
    }
    bytes.resize(received);
    return bytes;
}

/// The request but for its mark and its size.
std::string requestBody(const Alert& alert) {
    std::string body;
    appendNumber(body, static_cast<std::size_t>(alert.style));
    appendNumber(body, alert.buttons.size());
    appendText(body, alert.message);
    for (const std::string& title : alert.buttons) {
        appendText(body, title);
    }
    return body;
}

Alert parseBody(std::string_view body) {
    Parser parser(body);
    Alert alert;
    const std::uint32_t style = parser.number();
    const std::uint32_t buttons = parser.number();
    if (style > static_cast<std::uint32_t>(AlertStyle::Critical) || buttons == 0 || buttons > MAX_BUTTONS) {
        throw AlertFault("the other side asked for an invalid alert");
    }
    alert.style = static_cast<AlertStyle>(style);
    alert.message = parser.text();
    for (std::uint32_t i = 0; i < buttons; ++i) {
        alert.buttons.push_back(parser.text());
    }
    parser.end();
    return alert;
}

std::optional<std::size_t> readAnswer(int socket, std::size_t buttons) {
    const std::string answer = receive(socket, ANSWER_MARK.size() + NUMBER_SIZE);
    if (answer.empty()) {
        throw AlertFault("the other side closed the socket without an answer");
    }
    Parser parser(answer);
    parser.mark(ANSWER_MARK);
    const std::uint32_t button = parser.number();
    if (button == CANNOT_SHOW) {
        return std::nullopt;
    }
    if (button >= buttons) {
        throw AlertFault("the other side answered with a button that does not exist");
    }
    return button;
}

/// Something to read while nothing was asked is the answer to nothing.
void requireSilence(int socket) {
    char byte = 0;
    if (recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0) {
        throw AlertFault("the other side answered without being asked");
    }
}

}  // namespace

std::optional<std::size_t> closingButton(const Alert& alert) {
    const auto cancel = std::find(alert.buttons.begin(), alert.buttons.end(), "Cancel");
    if (cancel == alert.buttons.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(cancel - alert.buttons.begin());
}

std::size_t unansweredButton(const Alert& alert) {
    return closingButton(alert).value_or(alert.buttons.size() - 1);
}

bool fitsRequest(const Alert& alert) {
    std::size_t size = 3 * NUMBER_SIZE + alert.message.size();
    for (const std::string& title : alert.buttons) {
        size += NUMBER_SIZE + title.size();
    }
    return alert.buttons.size() <= MAX_BUTTONS && size <= MAX_REQUEST_SIZE;
}

std::optional<std::size_t> askOver(int socket, const Alert& alert) {
    const std::string body = requestBody(alert);
    std::string request(REQUEST_MARK);
    appendText(request, body);
    try {
        requireSilence(socket);
        sendAll(socket, request);
        return readAnswer(socket, alert.buttons.size());
    } catch (const AlertFault&) {
        shutdown(socket, SHUT_RDWR);
        throw;
    }
}

std::optional<Alert> readAlert(int socket) {
    const std::string head = receive(socket, REQUEST_MARK.size() + NUMBER_SIZE);
    if (head.empty()) {
        return std::nullopt;
    }
    Parser parser(head);
    parser.mark(REQUEST_MARK);
    const std::uint32_t size = parser.number();
    if (size > MAX_REQUEST_SIZE) {
        throw AlertFault("the other side asked for an alert that is too long");
    }
    return parseBody(receive(socket, size));
}

void writeAnswer(int socket, std::optional<std::size_t> button) {
    std::string answer(ANSWER_MARK);
    appendNumber(answer, button.value_or(CANNOT_SHOW));
    sendAll(socket, answer);
}

}  // namespace cv
