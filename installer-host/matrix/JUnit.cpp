#include "installer-host/matrix/JUnit.h"

#include <array>
#include <cstdio>
#include <map>
#include <pugixml.hpp>
#include <sstream>

#include "installer-host/Message.h"
#include "installer-host/report/Phrases.h"

namespace host {

namespace {

using Outcome = CaseResult::Outcome;
using pugi::xml_node;

/// XML cannot hold control characters, not even escaped.
void set(xml_node node, const char* name, const std::string& text) {
    node.append_attribute(name) = printable(text).c_str();
}

void addText(xml_node node, const char* name, const std::string& text) {
    if (!text.empty()) {
        node.append_child(name).text() = printable(text).c_str();
    }
}

std::string seconds(std::chrono::milliseconds time) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(time.count()) / 1000);
    return text.data();
}

void addProperties(xml_node node, const CaseResult& result) {
    xml_node list = node.append_child("properties");
    const auto add = [&](const char* name, const std::string& value) {
        xml_node property = list.append_child("property");
        set(property, "name", name);
        set(property, "value", value);
    };
    add("exitStatus", std::to_string(static_cast<int>(result.status)));
    if (result.isSlow) {
        add("slow", "true");
    }
    if (leftProcesses(result)) {
        add("leftProcesses", result.report["leftProcesses"].dump());
    }
}

/// A step that says so, or an outcome that is not the expected one, fails the case; all else is an error in it.
bool isFailure(const CaseResult& result) {
    return result.status == ExitStatus::StepFailed || result.status == ExitStatus::NotAsExpected;
}

void addCase(xml_node suite, const MatrixCase& one, const CaseResult& result) {
    xml_node node = suite.append_child("testcase");
    set(node, "classname", std::to_string(one.product));
    set(node, "name", one.name);
    set(node, "time", seconds(result.duration));
    if (result.outcome == Outcome::NotRun) {
        node.append_child("skipped");
        return;
    }
    addProperties(node, result);
    if (result.outcome == Outcome::Failed) {
        xml_node fault = node.append_child(isFailure(result) ? "failure" : "error");
        set(fault, "type", "exit status " + std::to_string(static_cast<int>(result.status)));
        set(fault, "message", result.report["error"]["what"].get<std::string>());
        std::string differences;
        const Json expectation = result.report.value("expectation", Json());
        for (const Json& difference : expectation.is_object() ? expectation["differences"] : Json::array()) {
            differences += difference["text"].get<std::string>() + "\n";
        }
        fault.text() = printable(differences).c_str();
    }
    addText(node, "system-out", result.text);
    addText(node, "system-err", result.messages);
}

/// Counts the cases of a suite in its attributes.
void addCounts(xml_node suite) {
    std::map<std::string, int> counts{{"failures", 0}, {"errors", 0}, {"skipped", 0}};
    int tests = 0;
    for (const xml_node one : suite.children("testcase")) {
        ++tests;
        counts["failures"] += one.child("failure") ? 1 : 0;
        counts["errors"] += one.child("error") ? 1 : 0;
        counts["skipped"] += one.child("skipped") ? 1 : 0;
    }
    suite.append_attribute("tests") = tests;
    for (const auto& [name, count] : counts) {
        suite.append_attribute(name.c_str()) = count;
    }
}

}  // namespace

std::string matrixJUnit(const MatrixResult& matrix) {
    pugi::xml_document document;
    xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    xml_node root = document.append_child("testsuites");
    set(root, "name", "installer-host matrix " + matrix.options.bundle);
    std::map<std::string, xml_node> suites;
    const auto suiteOf = [&](const std::string& name) {
        const auto [place, isNew] = suites.insert({name, {}});
        if (isNew) {
            place->second = root.append_child("testsuite");
            set(place->second, "name", name);
            set(place->second, "timestamp", timeText(matrix.started));
        }
        return place->second;
    };
    for (std::size_t i = 0; i < matrix.results.size(); ++i) {
        const MatrixCase& one = matrix.list.cases[i];
        addCase(suiteOf(std::to_string(one.product)), one, matrix.results[i]);
    }
    for (const std::string& name : matrix.unused) {
        xml_node node = suiteOf("expectation").append_child("testcase");
        set(node, "classname", "expectation");
        set(node, "name", name);
        set(node.append_child("failure"), "message", name + " is expected and was not run");
    }
    for (const auto& [name, suite] : suites) {
        addCounts(suite);
    }
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

}  // namespace host
