#include "installer-host/run/WorkerProtocol.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <nlohmann/json.hpp>
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
    std::vector<std::string> arguments{std::to_string(order.eventFd),      order.bundle,
                                       std::to_string(order.product),      std::to_string(order.language),
                                       std::to_string(order.blockVersion), std::string(order.direct ? DIRECT : TABLE)};
    for (const Step step : order.steps) {
        arguments.emplace_back(shortName(step));
    }
    return arguments;
}

std::optional<WorkerOrder> parseOrder(int argc, const char* const* argv) {
    WorkerOrder order;
    if (argc < FIXED_ARGUMENTS || !parse(argv[1], order.eventFd) || !parse(argv[3], order.product) ||
        !parse(argv[4], order.language) || !parse(argv[5], order.blockVersion) || !parse(argv[6], order.direct)) {
        return std::nullopt;
    }
    order.bundle = argv[2];
    for (int i = FIXED_ARGUMENTS; i < argc; ++i) {
        if (!parse(argv[i], order.steps.emplace_back())) {
            return std::nullopt;
        }
    }
    return order;
}

void writeEvent(int fd, const nlohmann::json& event) {
    const std::string line = event.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    for (std::size_t written = 0; written < line.size();) {
        const ssize_t count = write(fd, line.data() + written, line.size() - written);
        if (count < 0 && errno != EINTR) {
            return;
        }
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

}  // namespace host
