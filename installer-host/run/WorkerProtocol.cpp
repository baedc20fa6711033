#include "installer-host/run/WorkerProtocol.h"

#include <charconv>
#include <string_view>

namespace host {

namespace {

constexpr std::string_view DIRECT = "direct";
constexpr std::string_view TABLE = "table";

/// The arguments before the steps, the program's name included.
constexpr int FIXED_ARGUMENTS = 7;

template <typename Number>
bool parse(std::string_view text, Number& number) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && stop == text.data() + text.size();
}

bool parse(std::string_view text, bool& direct) {
    direct = text == DIRECT;
    return direct || text == TABLE;
}

bool parse(std::string_view text, Step& step) {
    step = text == shortName(Step::PreInstall) ? Step::PreInstall : Step::PostInstall;
    return text == shortName(step);
}

}  // namespace

std::vector<std::string> toArguments(const WorkerOrder& order) {
    const Installation& installation = order.installation;
    std::vector<std::string> arguments{std::to_string(order.eventFd),
                                       order.bundle,
                                       std::to_string(installation.product),
                                       std::to_string(installation.language),
                                       std::to_string(installation.blockVersion),
                                       std::string(installation.direct ? DIRECT : TABLE)};
    for (const Step step : installation.steps) {
        arguments.emplace_back(shortName(step));
    }
    return arguments;
}

std::optional<WorkerOrder> parseOrder(int argc, const char* const* argv) {
    WorkerOrder order;
    Installation& installation = order.installation;
    if (argc < FIXED_ARGUMENTS || !parse(argv[1], order.eventFd) || !parse(argv[3], installation.product) ||
        !parse(argv[4], installation.language) || !parse(argv[5], installation.blockVersion) ||
        !parse(argv[6], installation.direct)) {
        return std::nullopt;
    }
    order.bundle = argv[2];
    installation.steps.clear();
    for (int i = FIXED_ARGUMENTS; i < argc; ++i) {
        if (!parse(argv[i], installation.steps.emplace_back())) {
            return std::nullopt;
        }
    }
    return order;
}

}  // namespace host
