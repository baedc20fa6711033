#include "installer-host/run/Transcript.h"

#include <gmock/gmock.h>

namespace {

using namespace host;

const char* const OUTCOMES[] = {"not run", "done", "returned", "exception", "crashed", "timed out", "interrupted"};
const char* const ENDS[] = {"finished", "timed out", "died", "broke", "interrupted"};

/// What the lines of a story come to: how the worker ended, and what the steps came to. A letter stands for an event
/// that is well formed; anything longer is a line as it is.
std::string toldBy(const std::vector<std::string>& story, const ChildEnd& end = {}, bool isCheck = false) {
    const std::pair<char, Event> letters[] = {
        {'s', Started{}},
        {'b', StepBegins{Step::PreInstall, 0}},
        {'B', StepBegins{Step::PostInstall, 0}},
        {'e', StepEnds{Step::PreInstall, 1, "", ""}},
        {'E', StepEnds{Step::PostInstall, 1, "", ""}},
        {'x', StepEnds{Step::PreInstall, 0, "int", "\x1b[31m\xff"}},
        {'n', NotStored{{"/f", "full"}}},
        {'o', Finding{"code", true, "loads", ExitStatus::Done}},
        {'r', Refused{ExitStatus::InterfaceRefused, "no"}},
        {'f', Finished{}},
    };
    Options options;
    options.command = isCheck ? Command::Check : Command::Run;
    if (isCheck) {
        options.installation.steps.clear();
    }
    Transcript transcript(options);
    for (std::string line : story) {
        for (const auto& [letter, event] : letters) {
            line = line == std::string(1, letter) ? encode(event).substr(0, encode(event).size() - 1) : line;
        }
        if (!transcript.hear(line)) {
            break;
        }
    }
    const RunResult result = transcript.finish(end);
    std::string text = std::string(ENDS[static_cast<int>(result.end)]) + (result.failure ? ", refused" : "");
    for (const StepResult& step : result.steps) {
        text += std::string(", ") + OUTCOMES[static_cast<int>(step.outcome)];
    }
    return text;
}

std::vector<std::string> lettersOf(const std::string& letters) {
    std::vector<std::string> story;
    for (const char letter : letters) {
        story.emplace_back(1, letter);
    }
    return story;
}

TEST(Transcript, BelievesOnlyWhatAWorkerCanTell) {
    const struct {
        const char* story;
        const char* told;
    } cases[] = {
        {"sbeBEf", "finished, done, done"},       {"sbeBEnnf", "finished, done, done"},
        {"sbxf", "finished, exception, not run"}, {"sbxnf", "finished, exception, not run"},
        {"srf", "broke, not run, not run"},       {"sr", "finished, refused, not run, not run"},
        {"", "died, not run, not run"},           {"s", "died, not run, not run"},
        {"sbe", "died, returned, not run"},       {"sbeB", "died, returned, crashed"},
        {"sbeBE", "died, returned, returned"},    {"sf", "broke, not run, not run"},
        {"sbef", "broke, returned, not run"},     {"b", "broke, not run, not run"},
        {"ss", "broke, not run, not run"},        {"sbb", "broke, crashed, not run"},
        {"sB", "broke, not run, not run"},        {"se", "broke, not run, not run"},
        {"sbE", "broke, crashed, not run"},       {"sbee", "broke, returned, not run"},
        {"sbeb", "broke, returned, not run"},     {"sbxB", "broke, exception, not run"},
        {"sbeBEB", "broke, returned, returned"},  {"sbn", "broke, crashed, not run"},
        {"sben", "died, returned, not run"},      {"sbr", "broke, crashed, not run"},
        {"sber", "broke, returned, not run"},     {"sbf", "broke, crashed, not run"},
        {"so", "broke, not run, not run"},        {"sbeBEfs", "broke, returned, returned"},
        {"sbeBEff", "broke, returned, returned"}, {"sn", "broke, not run, not run"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(toldBy(lettersOf(c.story)), c.told) << c.story;
    }
    using How = ChildEnd::How;
    EXPECT_EQ(toldBy(lettersOf("sbeBEf"), {How::ByItself, 139, 0}), "died, returned, returned");
    EXPECT_EQ(toldBy(lettersOf("sbeB"), {How::TimedOut, 0, 0}), "timed out, returned, timed out");
    EXPECT_EQ(toldBy(lettersOf("sb"), {How::Interrupted, 0, 2}), "interrupted, interrupted, not run");
    EXPECT_EQ(toldBy(lettersOf("sof"), {}, true), "finished");
    EXPECT_EQ(toldBy(lettersOf("sf"), {}, true), "broke");
    EXPECT_EQ(toldBy(lettersOf("sb"), {}, true), "broke");
    EXPECT_EQ(toldBy(lettersOf("so" + std::string(MOST_EVENTS, 'o') + "f"), {}, true), "broke");
    EXPECT_EQ(toldBy(lettersOf("sbeBE" + std::string(MOST_FAULTS + 1, 'n') + "f")), "broke, returned, returned");
}

TEST(Transcript, RefusesWhatIsNotWellFormed) {
    const std::string right = R"({"event":"stepBegins","flags":0,"step":"pre"})";
    EXPECT_EQ(toldBy({"s", right}), "died, crashed, not run");
    const std::string lines[] = {
        "",
        "{}",
        "[]",
        "null",
        "\"stepBegins\"",
        "{\"event\":\"started\"",
        R"({"event":1})",
        R"({"event":["stepBegins"],"flags":0,"step":"pre"})",
        R"({"event":"stepbegins","flags":0,"step":"pre"})",
        R"({"event":"stepBegins","step":"pre"})",
        R"({"event":"stepBegins","flags":0})",
        R"({"event":"stepBegins","flags":-1,"step":"pre"})",
        R"({"event":"stepBegins","flags":4294967296,"step":"pre"})",
        R"({"event":"stepBegins","flags":1e300,"step":"pre"})",
        R"({"event":"stepBegins","flags":"0","step":"pre"})",
        R"({"event":"stepBegins","flags":null,"step":"pre"})",
        R"({"event":"stepBegins","flags":0,"step":0})",
        R"({"event":"stepBegins","flags":0,"step":"middle"})",
        R"({"event":"stepBegins","flags":0,"step":"pre","more":1})",
        R"({"event":"refused","status":0,"text":""})",
        R"({"event":"refused","status":5,"text":""})",
        R"({"event":"refused","status":3,"text":")" + std::string(20000, 'a') + "\"}",
        "{\"event\":\"refused\",\"status\":3,\"text\":\"\xff\"}",
        right + std::string(LONGEST_EVENT, ' '),
        std::string(60000, '['),
        std::string(60000, '{'),
        R"({"event":"refused","status":3,"text":)" + std::string(30000, '[') + std::string(30000, ']') + "}",
    };
    for (const std::string& line : lines) {
        EXPECT_EQ(toldBy({"s", line}), "broke, not run, not run") << line.substr(0, 80);
    }
}

/// Texts of any length and kind still make an event that is believed.
TEST(Transcript, HearsHowAStepFailed) {
    const std::string hostile[] = {std::string(100000, '\x1b'), std::string(100000, '\xff'),
                                   std::string(3999, 'a') + "\xe2\x82\xac\xe2\x82\xac", std::string("a\0b\n", 4)};
    for (const std::string& text : hostile) {
        const std::string line = encode(StepEnds{Step::PostInstall, 7, text, text});
        EXPECT_LT(line.size(), LONGEST_EVENT);
        EXPECT_EQ(line.find('\n'), line.size() - 1);
        const std::optional<Event> event = decode(line.substr(0, line.size() - 1));
        ASSERT_TRUE(event && std::holds_alternative<StepEnds>(*event));
        EXPECT_EQ(std::get<StepEnds>(*event).flags, 7U);
        EXPECT_EQ(std::get<StepEnds>(*event).exceptionType.substr(0, 2),
                  std::get<StepEnds>(*event).exceptionMessage.substr(0, 2));
    }
    EXPECT_EQ(std::get<Refused>(*decode(R"({"event":"refused","status":3,"text":"a"})")).text, "a");
}

}  // namespace
