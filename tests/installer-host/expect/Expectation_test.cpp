#include "installer-host/expect/Expectation.h"

#include <random>
#include <set>

#include "installer-host/expect/Difference.h"
#include "installer-host/expect/ExpectationFile.h"
#include "tests/support/Test.h"

namespace {

using namespace host;
using namespace test;

/// An expectation that was read from a file with this text.
Expectation expectation(const std::string& text) {
    const TempDir folder;
    writeFile(folder / "e.json", text);
    return Expectation::read(folder / "e.json");
}

Facts facts(const char* text) {
    return factsFrom(Json::parse(text));
}

TEST(Expectation, NamesEachDifferenceWithTypes) {
    constexpr const char* FOUND = R"({"exitStatus": 0, "steps": {"pre": "done"}, "finderFlags": {"/a\r": 1024},
        "preferences": {"d": {"n": 2, "s": "2", "gone": null},
                        "/x.plist": {"l": {"type": "array", "value": []},
                                     "r": {"type": "real", "value": 1.5, "single": true}}},
        "entries": {"/b": "created file"}, "alerts": {"1": "T: text"}})";
    const std::pair<const char*, const char*> cases[] = {
        {FOUND, ""},
        {R"({"preferences": {"d": {"n": 2}}})", ""},
        {R"({"preferences": {"d": {"other": null}}, "entries": {"/c": null}})", ""},
        {R"({"preferences": {"d": {"n": "2"}}})", R"(d: "n": expected "2" (string), found 2 (integer);)"},
        {R"({"preferences": {"d": {"n": 2.0}}})", R"(d: "n": expected 2.0 (real), found 2 (integer);)"},
        {R"({"preferences": {"d": {"n": {"type": "uid", "value": 2}}}})",
         "d: \"n\": expected 2 (uid), found 2 (integer);"},
        {R"({"preferences": {"/x.plist": {"r": 1.5}}})",
         "/x.plist: \"r\": expected {\"type\":\"real\",\"value\":1.5}, "
         "found {\"single\":true,\"type\":\"real\",\"value\":1.5};"},
        {R"({"preferences": {"e": {"n": true}}})", R"(e: "n": expected true (boolean), found nothing;)"},
        {R"({"exitStatus": 1, "steps": {"pre": "crashed"}})",
         "exit status: expected 1, found 0;pre-install step: expected crashed, found done;"},
        {R"({"finderFlags": {"/a\r": 0}})", "/a\\r: Finder flags: expected 0x0000, found 0x0400 (custom icon);"},
        {R"({"entries": {"/b": null, "/c": "removed link"}})",
         "/b: expected no change, found created file;/c: expected removed link, found no change;"},
        {R"({"complete": true, "preferences": {"d": {"n": 2, "s": "2"}}, "finderFlags": {"/a\r": 1024},
             "entries": {"/b": "created file"}, "steps": {"pre": "done"}})",
         "alert 1: expected nothing, found T: text;/x.plist: \"l\": expected nothing, found [] (array);"
         "/x.plist: \"r\": expected nothing, found 1.5 (real);"
         "d: \"gone\": was removed, and nothing is expected of it;"},
    };
    for (const auto& [expected, differences] : cases) {
        const Expectation wanted = expectation(expected);
        std::string text;
        for (const Difference& difference : compare(*wanted.of(""), wanted.isComplete(), facts(FOUND))) {
            text += describe(difference) + ";";
        }
        EXPECT_EQ(text, differences) << expected;
    }
}

TEST(Expectation, RefusesWhatIsNone) {
    const std::string deep(100000, '['), codes = "[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]";
    const std::string run = R"("schema": "2.1", "command": "run", "steps": [], "alerts": [], )";
    const std::pair<std::string, const char*> cases[] = {
        {"", "unexpected end of input"},
        {"[]", "it holds no object"},
        {R"({"preferenes": {}})", "no \"preferenes\""},
        {R"({"cases": {"5100/0/on": {"exitstatus": 0}}})", "no \"exitstatus\""},
        {R"({"cases": {"5100/0": {}}})", "\"5100/0\" is not of the form PRODUCT/LANGUAGE/STATUS"},
        {R"({"expectation": "2.0"})", "version 2.0"},
        {R"({"exitStatus": "0"})", "\"exitStatus\" needs a whole number"},
        {R"({"preferences": {"d": 1}})", "\"d\" is not an object"},
        {R"({"preferences": {"": {"n": 1}}})", "a member without a name"},
        {R"({"preferences": {"d": {"n": {"type": "array", "value": [1]}}}})", "\"n\" needs a plain value"},
        {R"({"covers": [{}], "cases": {}})", "products"},
        {R"({"cases": {}, "covers": [{"products": )" + codes + ", \"languages\": " + codes +
             ", \"statuses\": " + codes + "}]}",
         "more than 10000 cases"},
        {R"({"preferences": {"d": {"n": )" + deep, "nested too deeply"},
        {R"({"finderFlags": {"/a": 65536}})", "\"/a\" needs a whole number from 0 to 65535"},
        {"{" + run + R"("preferences": [{"domain": "d", "key": "k", "change": "added", "after": {}}]})",
         "\"after\" is not a value with its type"},
        {"{" + run + R"("preferences": [{"domain": "d", "key": "k", "change": "added",
            "after": {"type": "integer", "value": null}}]})",
         "\"after\" is not a value with its type"},
        {R"({"schema": "2.1", "command": "run", "steps": [{"step": "", "outcome": "done", "resultFlagsAfter": 0}]})",
         "\"step\" is empty"},
        {"{" + run + R"("preferences": [{"domain": "", "key": "k", "change": "removed", "after": null}]})",
         "\"domain\" is empty"},
        {"{" + run +
             R"("preferences": [{"domain": null, "path": "", "key": "k", "change": "removed", "after": null}]})",
         "\"path\" is empty"},
        {"{" + run + R"("preferences": [], "finderFlags": [{"path": "", "before": {}, "after": {"flags": 0}}]})",
         "\"path\" is empty"},
        {"{" + run + R"("preferences": [], "finderFlags": [], "entries": [{"path": "", "change": "created",
            "before": null, "after": {"type": "file"}, "from": null, "differs": []}]})",
         "\"path\" is empty"},
        {R"({"schema": "2.1", "command": "run", "exitStatus": 1e300})", "exitStatus is not a whole number"},
        {R"({"schema": "2.1", "command": "run", "steps": [], "exitStatus": 0})", "alerts"},
    };
    for (const auto& [text, problem] : cases) {
        try {
            expectation(text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), ExitStatus::Usage);
            EXPECT_THAT(failure.what(), HasSubstr(problem));
        }
    }
}

TEST(Expectation, OfCasesAddsUpFromTheGeneralToTheParticular) {
    const Expectation wanted = expectation(R"({"cases": {"7/0/on": {"exitStatus": 5},
        "*/*/*": {"exitStatus": 0}, "*/*/off": {"steps": {"pre": "done"}}, "8/*/*": {"exitStatus": 1}}})");
    EXPECT_EQ(toJson(*wanted.of("7/0/on")).dump(), R"({"exitStatus":5})");
    EXPECT_EQ(toJson(*wanted.of("8/3/off")).dump(), R"({"exitStatus":1,"steps":{"pre":"done"}})");
    EXPECT_THAT(wanted.unused({"7/0/off", "9/0/off"}), ElementsAre("8/*/*", "7/0/on"));
    const Expectation listed = expectation(R"({"cases": {"*/*/*": {}},
        "covers": [{"products": [7], "languages": [-1, 0], "statuses": ["on"]}]})");
    EXPECT_TRUE(listed.of("7/-1/on"));
    EXPECT_FALSE(listed.of("7/-1/off"));
    EXPECT_THAT(listed.unused({"7/0/on"}), ElementsAre("7/-1/on"));
}

/// Whatever the cases have in common, the file says of each what was true of it, and no more.
TEST(ExpectationFile, LosesNothingWhereCasesAreAlike) {
    std::mt19937 random(1);
    const auto chance = [&](unsigned of) { return random() % of == 0; };
    for (int round = 0; round < 50; ++round) {
        std::vector<std::pair<CaseParts, Facts>> cases;
        for (const char* product : {"6300", "-1"}) {
            for (const char* language : {"0", "11"}) {
                for (const char* status : {"on", "a file"}) {
                    Facts some = facts(R"({"exitStatus": 0, "steps": {"pre": "done", "post": "done"}})");
                    for (const char* part : {product, language, status}) {
                        if (!chance(3)) {
                            some[{FactKind::Preference, "d", part}] = {
                                chance(9) ? TypedValue() : TypedValue{{"type", "string"}, {"value", part}}};
                        }
                    }
                    if (!chance(4) || cases.empty()) {  // not always a whole grid
                        cases.push_back({{product, language, status}, some});
                    }
                }
            }
        }
        const std::string text = expectationFileText(cases);
        const Expectation read = expectation(text);
        std::vector<std::string> names;
        for (const auto& [parts, some] : cases) {
            names.push_back(nameOf(parts));
            EXPECT_EQ(toJson(*read.of(nameOf(parts))), toJson(some)) << nameOf(parts) << " in " << text;
        }
        EXPECT_THAT(read.unused(names), testing::IsEmpty());
        EXPECT_EQ(read.unused({}).size(), cases.size());
    }
}

TEST(ExpectationFile, LosesNothingOfAValue) {
    const char* const values[] = {
        "1.5",
        R"({"type": "real", "value": 1.5, "single": true})",
        R"({"type": "real", "value": "nan"})",
        R"({"type": "uid", "value": 1})",
        R"({"type": "date", "value": "2026-01-02T03:04:05Z", "seconds": 1.5})",
        R"({"type": "dictionary", "value": {"type": {"type": "data", "value": "00ff"}}})",
    };
    for (const char* const value : values) {
        const Facts some = facts((std::string(R"({"preferences": {"d": {"k": )") + value + "}}}").c_str());
        const std::string text = expectationFileText(some);
        EXPECT_THAT(compare(*expectation(text).of(""), true, some), testing::IsEmpty()) << text;
    }
}

}  // namespace
