#include "installer-host/run/WorkerProtocol.h"

#include <gtest/gtest.h>

namespace {

using namespace host;

std::optional<WorkerOrder> parseWorkerArguments(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "installer-host-worker");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    return parseOrder(static_cast<int>(argv.size()), argv.data());
}

TEST(WorkerOrder, SurvivesTheWayToTheWorker) {
    const std::vector<std::string> arguments{"7",     "/a bundle\n\xFF", "-2147483648", "-1",
                                             "65535", "direct",          "post",        "pre"};
    const auto order = parseWorkerArguments(arguments);
    ASSERT_TRUE(order);
    EXPECT_EQ(toArguments(*order), arguments);
    EXPECT_EQ(order->installation.steps, (std::vector<Step>{Step::PostInstall, Step::PreInstall}));
    for (std::size_t spoilt = 0; spoilt < arguments.size(); ++spoilt) {
        std::vector<std::string> wrong = arguments;
        wrong[spoilt] += "x";
        EXPECT_EQ(parseWorkerArguments(wrong).has_value(), spoilt == 1) << "argument " << spoilt;
    }
    EXPECT_FALSE(parseWorkerArguments({"7", "/bundle"}));
}

}  // namespace
