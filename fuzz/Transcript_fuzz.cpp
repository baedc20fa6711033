// What the host hears from a worker whose bundle writes into the same pipe: any lines, in any order, against the
// language of the stories that a worker can tell.

#include <regex>

#include "fuzz/Fuzz.h"
#include "installer-host/run/Transcript.h"

namespace {

using namespace host;

/// A kind of run, and the stories that its worker may have begun to tell, a letter an event: s started, r refused,
/// b and B the first and the second step begin, e and E they end, x and X an exception ends them, n not stored, o a
/// finding, f finished.
const struct {
    std::vector<Step> steps;
    std::regex begun, told;
} KINDS[] = {
    {{Step::PreInstall, Step::PostInstall},
     std::regex("(s(r|b(xn*f?|en*(B([EX]n*f?)?)?)?)?)?"),
     std::regex("sr|sbxn*f|sben*B[EX]n*f")},
    {{Step::PostInstall}, std::regex("(s(r|b([ex]n*f?)?)?)?"), std::regex("sr|sb[ex]n*f")},
    {{}, std::regex("(s(r|o+f?)?)?"), std::regex("sr|so+f")},
};

char placed(char letter, Step step, const std::vector<Step>& steps) {
    if (!steps.empty() && step == steps[0]) {
        return letter;
    }
    return steps.size() > 1 && step == steps[1] ? static_cast<char>(letter - 'a' + 'A') : '?';
}

char letterOf(const std::optional<Event>& event, const std::vector<Step>& steps) {
    if (!event) {
        return '?';
    }
    if (const auto* begins = std::get_if<StepBegins>(&*event)) {
        return placed('b', begins->step, steps);
    }
    if (const auto* ends = std::get_if<StepEnds>(&*event)) {
        return placed(ends->exceptionType.empty() ? 'e' : 'x', ends->step, steps);
    }
    return "s..onrf"[event->index()];
}

Event eventFrom(fuzz::Input& input) {
    const Step step = input.ConsumeBool() ? Step::PreInstall : Step::PostInstall;
    const auto flags = input.ConsumeIntegral<std::uint32_t>();
    const ExitStatus status = input.ConsumeBool() ? ExitStatus::BundleUnusable : ExitStatus::InterfaceRefused;
    const std::string text = input.ConsumeRandomLengthString(30);
    switch (input.ConsumeIntegralInRange(0, 7)) {
        case 0:
            return Started{};
        case 1:
            return StepBegins{step, flags};
        case 2:
            return StepEnds{step, flags, "", text};
        case 3:
            return StepEnds{step, flags, text, text};
        case 4:
            return Finding{text, flags % 2 == 0, text, flags % 2 == 0 ? ExitStatus::Done : status};
        case 5:
            return NotStored{{text, text}};
        case 6:
            return Refused{status, text};
        default:
            return Finished{};
    }
}

/// Nearly always the line of an event, sometimes with a fault in it.
std::string lineFrom(fuzz::Input& input) {
    std::string line = encode(eventFrom(input));
    fuzz::expect("one line", line.find('\n') == line.size() - 1 && line.size() <= LONGEST_EVENT);
    line.pop_back();
    if (input.ConsumeIntegral<unsigned char>() >= 0xE0) {
        const auto at = input.ConsumeIntegralInRange<std::size_t>(0, line.size());
        line.replace(at, input.ConsumeIntegralInRange<std::size_t>(0, line.size() - at),
                     input.ConsumeRandomLengthString(20));
    }
    return line;
}

/// What is understood is understood the same way when it is told again.
void checkDecoding(const std::optional<Event>& event) {
    if (event) {
        const std::string again = encode(*event);
        const std::optional<Event> second = decode(again.substr(0, again.size() - 1));
        fuzz::expect("an event that is told again", second && encode(*second) == again);
    }
}

void checkOrder(fuzz::Input& input) {
    std::vector<std::string> words{"worker"};
    const char* const usual[] = {"7", "/b", "-1", "1000", "65536", "table", "direct", "pre", "post"};
    while (input.remaining_bytes() > 0 && words.size() < 10) {
        words.push_back(input.ConsumeBool() ? input.PickValueInArray(usual) : input.ConsumeRandomLengthString(12));
    }
    std::vector<const char*> argv;
    argv.reserve(words.size());
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    if (const auto order = parseOrder(static_cast<int>(argv.size()), argv.data())) {
        const std::vector<std::string> arguments = toArguments(*order);
        fuzz::expectEqual("the number of arguments", arguments.size(), words.size() - 1);
        fuzz::expectEqual("the bundle in the arguments", arguments[1], std::string(argv[2]));
        fuzz::expectEqual("the product in the arguments", std::stoll(arguments[2]), std::stoll(argv[3]));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    const auto& kind = input.PickValueInArray(KINDS);
    Options options;
    options.installation.steps = kind.steps;
    options.command = kind.steps.empty() ? Command::Check : Command::Run;
    Transcript transcript(options);
    std::string story;
    for (auto lines = input.ConsumeIntegralInRange(0, 12); lines > 0; --lines) {
        const std::string line = lineFrom(input);
        const std::optional<Event> event = decode(line);
        checkDecoding(event);
        story += letterOf(event, kind.steps);
        fuzz::trace() = " " + story + " with " + fuzz::shown(line);
        fuzz::expectEqual("belief", transcript.hear(line), std::regex_match(story, kind.begun));
    }
    const WorkerEnd end = transcript.finish({}).end;
    fuzz::expectEqual("that all was told", end == WorkerEnd::Finished, std::regex_match(story, kind.told));
    fuzz::expectEqual("that the story broke", end == WorkerEnd::BrokeProtocol, !std::regex_match(story, kind.begun));
    checkOrder(input);
    return 0;
}
