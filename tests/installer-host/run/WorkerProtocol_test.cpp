#include "installer-host/run/WorkerProtocol.h"

#include <gtest/gtest.h>

#include <tuple>

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
    const WorkerOrder order{
        7, "/a bundle\n\xFF", {{Step::PostInstall, Step::PreInstall}, -2147483647 - 1, -1, 65535, true}};
    const std::vector<std::string> arguments = toArguments(order);
    const auto parsed = parseWorkerArguments(arguments);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->eventFd, order.eventFd);
    EXPECT_EQ(parsed->bundle, order.bundle);
    const auto fields = [](const Installation& i) {
        return std::tie(i.steps, i.product, i.language, i.blockVersion, i.direct);
    };
    EXPECT_EQ(fields(parsed->installation), fields(order.installation));
    for (std::size_t spoilt = 0; spoilt < arguments.size(); ++spoilt) {
        std::vector<std::string> wrong = arguments;
        wrong[spoilt] += "x";
        EXPECT_EQ(parseWorkerArguments(wrong).has_value(), spoilt == 1) << "argument " << spoilt;
    }
    EXPECT_FALSE(parseWorkerArguments({"7", "/bundle"}));
}

}  // namespace
