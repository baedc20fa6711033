// Alerts asked on the socket that CV_ALERT_SOCKET names, and what its other side must refuse.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/Alert/AlertMessage.h"
#include "platform/Descriptor.h"
#include "tests/support/StandardError.h"

namespace {

using cv::Alert;
using testing::HasSubstr;
using testing::StartsWith;

class AlertSocket : public testing::Test {
protected:
    AlertSocket() {
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
        connect();
    }
    ~AlertSocket() override { unsetenv("CV_ALERT_SOCKET"); }

    /// Makes a new socket.
    void connect() {
        std::array<int, 2> ends{};
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0);  // blocking ones: Alert_test
        asking = cv::Descriptor(ends[0]);
        showing = cv::Descriptor(ends[1]);
        setenv("CV_ALERT_SOCKET", std::to_string(asking.get()).c_str(), 1);
    }

    void sendTo(const cv::Descriptor& end, const std::string& bytes) const {
        EXPECT_EQ(send(end.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

    cv::Descriptor asking, showing;
};

const Alert QUESTION{"Really?\n\xE2\x82\xAC", cv::AlertStyle::Critical, {"OK", "Cancel", "Retry", "Cancel"}};

TEST_F(AlertSocket, IsAskedFirst) {
    std::thread server([&] {
        const std::optional<Alert> alert = cv::readAlert(showing.get());
        ASSERT_TRUE(alert);
        EXPECT_EQ(alert->message, QUESTION.message);
        EXPECT_EQ(alert->style, QUESTION.style);
        EXPECT_EQ(alert->buttons, QUESTION.buttons);
        cv::writeAnswer(showing.get(), 3);
        cv::readAlert(showing.get());
        cv::writeAnswer(showing.get(), std::nullopt);
        EXPECT_FALSE(cv::readAlert(showing.get())) << "closed by the asking side";
    });
    EXPECT_EQ(test::errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 3U); }), "");
    EXPECT_THAT(test::errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 0U); }), StartsWith("[alert] Error: Really?\n"))
        << "the terminal is asked when the other side cannot show the alert";
    asking = cv::Descriptor();
    server.join();
}

TEST_F(AlertSocket, GivesEachThreadItsOwnAnswer) {
    constexpr std::size_t THREADS = 8;
    constexpr std::size_t ALERTS = 200;
    std::thread server([&] {
        while (const std::optional<Alert> alert = cv::readAlert(showing.get())) {
            cv::writeAnswer(showing.get(), std::stoul(alert->message));
        }
    });
    std::vector<std::thread> askers;
    for (std::size_t i = 0; i < THREADS; ++i) {
        askers.emplace_back([i] {
            const Alert alert{std::to_string(i), cv::AlertStyle::Warning, std::vector<std::string>(THREADS, "OK")};
            for (std::size_t n = 0; n < ALERTS; ++n) {
                EXPECT_EQ(cv::runAlert(alert), i);
            }
        });
    }
    for (std::thread& asker : askers) {
        asker.join();
    }
    asking = cv::Descriptor();
    server.join();
}

TEST_F(AlertSocket, ThatBreaksOffOrLiesIsReportedAndNotBelievedLater) {
    const struct {
        std::string answer, report;
    } ROWS[] = {{"", "closed the socket without an answer"},
                {std::string("CvAnswr1\1\0", 10), "sent too little"},
                {std::string("CvAnswr1\4\0\0\0", 12), "a button that there is not"},
                {"HTTP/1.1 200 OK", "does not speak of alerts"}};
    for (const auto& row : ROWS) {
        connect();
        std::thread server([&] {
            cv::readAlert(showing.get());
            sendTo(showing, row.answer);
            shutdown(showing.get(), SHUT_WR);
        });
        EXPECT_THAT(test::errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 1U); }),
                    testing::AllOf(StartsWith("alert: lost"), HasSubstr(row.report), HasSubstr("taking 'Cancel'")));
        server.join();
        EXPECT_THAT(test::errorsOf([] { cv::runAlert(QUESTION); }), StartsWith("alert: lost")) << row.report;
    }
}

TEST_F(AlertSocket, WithAnAnswerToNothingIsRefused) {
    cv::writeAnswer(showing.get(), 0);
    EXPECT_THAT(test::errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 1U); }), HasSubstr("without being asked"));
}

TEST_F(AlertSocket, IsNotAskedWhatItCannotHold) {
    const Alert longest{std::string(cv::MAX_REQUEST_SIZE - 18, 'x'), cv::AlertStyle::Warning, {"OK"}};
    std::thread server([&] {
        EXPECT_EQ(cv::readAlert(showing.get()).value().message, longest.message);
        cv::writeAnswer(showing.get(), 0);
        EXPECT_FALSE(cv::readAlert(showing.get()));
    });
    EXPECT_EQ(test::errorsOf([&] { cv::runAlert(longest); }), "");
    const Alert tooLong{longest.message + 'x', longest.style, longest.buttons};
    EXPECT_THAT(test::errorsOf([&] { cv::runAlert(tooLong); }), StartsWith("alert: the alert is too long"));
    asking = cv::Descriptor();
    server.join();
}

TEST(AlertSocketName, IsThatOfAStreamSocket) {
    std::array<int, 2> pipeEnds{};
    ASSERT_EQ(pipe(pipeEnds.data()), 0);
    const cv::Descriptor readEnd(pipeEnds[0]), writeEnd(pipeEnds[1]);
    for (const std::string& name :
         {std::to_string(writeEnd.get()), std::string("4096"), std::string("-1"), std::string(""), std::string("3x")}) {
        setenv("CV_ALERT_SOCKET", name.c_str(), 1);
        EXPECT_THAT(test::errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 1U); }),
                    HasSubstr("CV_ALERT_SOCKET is '" + name + "', which is no socket"));
    }
    unsetenv("CV_ALERT_SOCKET");
}

TEST_F(AlertSocket, RefusesRequestsThatAreNone) {
    const auto number = [](char value) { return std::string{value, 0, 0, 0}; };
    const std::string two = number(1) + number(2), ok = number(2) + "OK";
    const auto request = [&](const std::string& body) {
        return "CvAlert1" + number(static_cast<char>(body.size())) + body;
    };
    const std::string good = request(two + number(1) + "?" + ok + ok);
    sendTo(asking, good);
    EXPECT_EQ(cv::readAlert(showing.get()).value().buttons.size(), 2U);
    const std::string rows[] = {good.substr(0, 11),
                                good.substr(0, good.size() - 1),
                                "GET / HTTP/1.1\r\n\r\n",
                                "CvAlert1" + std::string("\1\0\x10\0", 4),               // a byte too long
                                request(number(3) + number(1) + number(0) + ok),         // no such style
                                request(number(1) + number(0) + number(0)),              // no button
                                request(number(1) + number(17) + number(0)),             // too many
                                request(two + number(1) + "?" + ok),                     // a button is missing
                                request(two + number(1) + "?" + ok + ok + ok),           // one more than it says
                                request(two + std::string(4, '\xFF') + "?" + ok + ok)};  // a text of 4 GiB
    for (const std::string& bytes : rows) {
        connect();
        sendTo(asking, bytes);
        shutdown(asking.get(), SHUT_WR);
        EXPECT_THROW(cv::readAlert(showing.get()), cv::AlertFault) << testing::PrintToString(bytes);
    }
}

}  // namespace
