#include "installer-host/run/WorkerProtocol.h"

#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>

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

using nlohmann::json;

constexpr const char* CUT = "... (cut)";
/// Escaped as JSON, a byte is up to six; two texts of this length fit in an event.
constexpr std::size_t LONGEST_TEXT = 4000;

std::string cut(const std::string& text) {
    if (text.size() <= LONGEST_TEXT) {
        return text;
    }
    std::size_t end = LONGEST_TEXT;
    const auto isContinuation = [&] { return (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80; };
    for (int back = 0; back < 3 && isContinuation(); ++back) {
        --end;
    }
    return text.substr(0, end) + CUT;
}

json toJson(const Started&) {
    return {{"event", "started"}};
}

json toJson(const StepBegins& event) {
    return {{"event", "stepBegins"}, {"step", shortName(event.step)}, {"flags", event.flags}};
}

json toJson(const StepEnds& event) {
    return {{"event", "stepEnds"},
            {"step", shortName(event.step)},
            {"flags", event.flags},
            {"type", cut(event.exceptionType)},
            {"message", cut(event.exceptionMessage)}};
}

json toJson(const Finding& finding) {
    return {{"event", "finding"},
            {"subject", cut(finding.subject)},
            {"ok", finding.ok},
            {"text", cut(finding.text)},
            {"status", static_cast<unsigned>(finding.status)}};
}

json toJson(const NotStored& event) {
    return {{"event", "notStored"}, {"what", cut(event.fault.what)}, {"reason", cut(event.fault.reason)}};
}

json toJson(const Refused& event) {
    return {{"event", "refused"}, {"status", static_cast<unsigned>(event.status)}, {"text", cut(event.text)}};
}

json toJson(const Finished&) {
    return {{"event", "finished"}};
}

/// Takes the members out of an event, and says whether each was there in its form and nothing else was.
class Members {
public:
    explicit Members(json&& object) : object_(std::move(object)) {}

    std::string text(const char* name) {
        const json value = take(name);
        // What is not UTF-8 was replaced, which makes a text longer.
        const bool isText = expect(value.is_string()) && expect(value.get_ref<const std::string&>().size() <= MOST);
        return isText ? value.get<std::string>() : "";
    }

    bool boolean(const char* name) {
        const json value = take(name);
        return expect(value.is_boolean()) && value.get<bool>();
    }

    std::uint32_t number(const char* name) {
        const json value = take(name);
        const bool fits = expect(value.is_number_unsigned()) &&
                          expect(value.get<std::uint64_t>() <= std::numeric_limits<std::uint32_t>::max());
        return fits ? value.get<std::uint32_t>() : 0;
    }

    Step step(const char* name) {
        Step value = Step::PreInstall;
        expect(parse(text(name), value));
        return value;
    }

    /// What a refused bundle comes to; Done when `ok`.
    ExitStatus status(const char* name, bool ok) {
        const auto value = static_cast<ExitStatus>(number(name));
        expect(ok ? value == ExitStatus::Done
                  : value == ExitStatus::BundleUnusable || value == ExitStatus::InterfaceRefused);
        return value;
    }

    bool wereRight() const { return right_ && object_.empty(); }

private:
    static constexpr std::size_t MOST = 3 * (LONGEST_TEXT + std::char_traits<char>::length(CUT));

    json take(const char* name) {
        const auto found = object_.find(name);
        if (!expect(found != object_.end())) {
            return {};
        }
        json value = std::move(*found);
        object_.erase(found);
        return value;
    }

    bool expect(bool holds) {
        right_ = right_ && holds;
        return holds;
    }

    json object_;
    bool right_ = true;
};

std::optional<Event> toEvent(const std::string& name, Members& members) {
    if (name == "started") {
        return Started{};
    }
    if (name == "stepBegins") {
        return StepBegins{members.step("step"), members.number("flags")};
    }
    if (name == "stepEnds") {
        return StepEnds{members.step("step"), members.number("flags"), members.text("type"), members.text("message")};
    }
    if (name == "finding") {
        const bool ok = members.boolean("ok");
        return Finding{members.text("subject"), ok, members.text("text"), members.status("status", ok)};
    }
    if (name == "notStored") {
        return NotStored{{members.text("what"), members.text("reason")}};
    }
    if (name == "refused") {
        return Refused{members.status("status", false), members.text("text")};
    }
    if (name == "finished") {
        return Finished{};
    }
    return std::nullopt;
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

std::string encode(const Event& event) {
    const json object = std::visit([](const auto& one) { return toJson(one); }, event);
    return object.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<Event> decode(std::string_view line) {
    json object = line.size() < LONGEST_EVENT ? json::parse(line, nullptr, false) : json();
    if (!object.is_object()) {
        return std::nullopt;
    }
    // Moved all the way: to copy what is nested deep takes a deep stack.
    Members members(std::move(object));
    const std::string name = members.text("event");
    std::optional<Event> event = toEvent(name, members);
    return members.wereRight() ? event : std::nullopt;
}

}  // namespace host
