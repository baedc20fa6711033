// Alerts asked on the socket that CV_ALERT_SOCKET names, and what its other side must refuse.

#include <fcntl.h>
#include <sys/socket.h>

#include "platform/Alert/AlertMessage.h"
#include "platform/Descriptor.h"
#include "tests/support/Test.h"

namespace {

using namespace test;
using cv::Alert;

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
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 3U); }), "");
    EXPECT_THAT(errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 0U); }), StartsWith("[alert] Error: Really?\n"))
        << "the terminal is asked when the other side cannot show the alert";
    asking = cv::Descriptor();
    server.join();
}

TEST_F(AlertSocket, GivesEachThreadItsOwnAnswer) {
    constexpr int THREADS = 8, ALERTS = 200;
    std::thread server([&] {
        while (const std::optional<Alert> alert = cv::readAlert(showing.get())) {
            cv::writeAnswer(showing.get(), std::stoul(alert->message));
        }
    });
    onThreads(THREADS, [](int number) {
        const Alert alert{std::to_string(number), cv::AlertStyle::Warning, std::vector<std::string>(THREADS, "OK")};
        for (int n = 0; n < ALERTS; ++n) {
            EXPECT_EQ(std::to_string(cv::runAlert(alert)), alert.message);
        }
    });
    asking = cv::Descriptor();
    server.join();
}

TEST_F(AlertSocket, ThatEndsOrLiesIsReportedAndNotUsedAgain) {
    for (const auto& [answer, report] : {std::pair<std::string, const char*>{"", "closed the socket without an answer"},
                                         {{"CvAnswr1\1\0", 10}, "sent too little"},
                                         {{"CvAnswr1\4\0\0\0", 12}, "a button that does not exist"},
                                         {"HTTP/1.1 200 OK", "that is not an alert message"}}) {
        connect();
        std::thread server([&, bytes = answer] {
            cv::readAlert(showing.get());
            sendTo(showing, bytes);
            shutdown(showing.get(), SHUT_WR);
        });
        EXPECT_THAT(errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 1U); }),
                    testing::AllOf(StartsWith("alert: lost"), HasSubstr(report), HasSubstr("taking 'Cancel'")));
        server.join();
        EXPECT_EQ(send(asking.get(), "x", 1, MSG_NOSIGNAL), -1) << "the socket is shut down";
        EXPECT_THAT(errorsOf([] { cv::runAlert(QUESTION); }), StartsWith("alert: lost")) << report;
    }
    connect();
    cv::writeAnswer(showing.get(), 0);
    EXPECT_THAT(errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 1U); }), HasSubstr("without being asked"));
}

TEST_F(AlertSocket, IsNotUsedForAnAlertThatDoesNotFit) {
    const Alert longest{std::string(cv::MAX_REQUEST_SIZE - 18, 'x'), cv::AlertStyle::Warning, {"OK"}};
    std::thread server([&] {
        EXPECT_EQ(cv::readAlert(showing.get()).value().message, longest.message);
        cv::writeAnswer(showing.get(), 0);
        EXPECT_FALSE(cv::readAlert(showing.get()));
    });
    EXPECT_EQ(errorsOf([&] { cv::runAlert(longest); }), "");
    const Alert tooLong{longest.message + 'x', longest.style, longest.buttons};
    EXPECT_THAT(errorsOf([&] { cv::runAlert(tooLong); }), StartsWith("alert: the alert is too long"));
    asking = cv::Descriptor();
    server.join();
}

TEST_F(AlertSocket, IsNamedByTheNumberOfAStreamSocket) {
    const cv::Descriptor file(open("/dev/null", O_RDWR | O_CLOEXEC)), datagrams(socket(AF_UNIX, SOCK_DGRAM, 0));
    for (const std::string& name :
         {std::to_string(file.get()), std::to_string(datagrams.get()), "4096"s, "-1"s, ""s, "3x"s}) {
        setenv("CV_ALERT_SOCKET", name.c_str(), 1);
        EXPECT_THAT(errorsOf([] { EXPECT_EQ(cv::runAlert(QUESTION), 1U); }),
                    HasSubstr("CV_ALERT_SOCKET is '" + name + "', which is not the number"));
    }
}

TEST_F(AlertSocket, RefusesMalformedRequests) {
    const auto number = [](char value) { return std::string{value, 0, 0, 0}; };
    const std::string two = number(1) + number(2), ok = number(2) + "OK";
    const auto request = [&](const std::string& body) {
        return "CvAlert1" + number(static_cast<char>(body.size())) + body;
    };
    const std::string good = request(two + number(1) + "?" + ok + ok);
    sendTo(asking, good);
    EXPECT_EQ(cv::readAlert(showing.get()).value().buttons.size(), 2U);
    // clang-format off
    const std::string rows[] = {
        good.substr(0, 11), good.substr(0, good.size() - 1), "GET / HTTP/1.1\r\n\r\n",
        "CvAlert1" + std::string("\1\0\x10\0", 4),               // a byte too long
        request(number(3) + number(1) + number(0) + ok),         // no such style
        request(number(1) + number(0) + number(0)),              // no button
        request(number(1) + number(17) + std::string(72, 0)),    // too many
        request(two + number(1) + "?" + ok),                     // a button is missing
        request(two + number(1) + "?" + ok + ok + ok),           // one more than it says
        request(two + std::string(4, '\xFF') + "?" + ok + ok)};  // a text of 4 GiB
    // clang-format on
    for (const std::string& bytes : rows) {
        connect();
        sendTo(asking, bytes);
        shutdown(asking.get(), SHUT_WR);
        EXPECT_THROW(cv::readAlert(showing.get()), cv::AlertFault) << PrintToString(bytes);
    }
}

}  // namespace
