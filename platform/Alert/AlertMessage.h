#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>

#include "platform/Alert/Alert.h"

/// \file
/// How an alert travels from the program that asks to whoever shows it: over a connected stream socket (AF_UNIX), one
/// request at a time, each followed by its answer. A program that finds the number of such a socket in the environment
/// variable CV_ALERT_SOCKET asks there; cv-alert finds its own as standard input.
///
/// The request, where a number is 32 bits with the lowest byte first, and a text is a number, its size, and as many
/// bytes:
///
///     8 bytes     "CvAlert1"
///     number      how many bytes follow, MAX_REQUEST_SIZE at most
///     number      the style, 0 to 2
///     number      how many buttons there are, 1 to MAX_BUTTONS
///     text        the message
///     texts       the titles of the buttons
///
/// The answer:
///
///     8 bytes     "CvAnswr1"
///     number      the index of the button, or 0xFFFFFFFF when the alert cannot be shown there
///
/// Bytes that are left over are a fault like any other. The reader does not look into texts: what is not UTF-8 in them
/// is for whoever shows them.

namespace cv {

constexpr std::size_t MAX_REQUEST_SIZE = std::size_t{1} << 20;
constexpr std::size_t MAX_BUTTONS = 16;

/// The other side closed the socket or broke the rules, or the socket itself failed.
class AlertFault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What closing the alert presses: the first button titled "Cancel". Nothing where there is none, and the alert stays.
std::optional<std::size_t> closingButton(const Alert& alert);

/// The result of an alert that was lost before it was answered: closingButton(), else the last button, since pressing
/// the first one would mean to agree.
std::size_t unansweredButton(const Alert& alert);

/// Whether a request can hold the alert.
bool fitsRequest(const Alert& alert);

/// The asking side: sends the alert, which must fit, and waits for the answer: the index of one of its buttons, or
/// nothing when the other side cannot show it. Throws AlertFault, and the socket is shut down then, so that no late
/// answer is taken for the answer to another alert. Never raises SIGPIPE.
std::optional<std::size_t> askOver(int socket, const Alert& alert);

/// The showing side: waits for a request, and for all of it. Nothing when the asking side has closed the socket. Throws
/// AlertFault, after which the socket cannot be used any more.
std::optional<Alert> readAlert(int socket);

/// The showing side: answers the alert that was read last; nothing says that it cannot be shown. Throws AlertFault.
void writeAnswer(int socket, std::optional<std::size_t> button);

}  // namespace cv
