#pragma once

#include <map>
#include <string>
#include <tuple>

#include "installer-host/look/PreferenceDomain.h"
#include "installer-host/report/JsonReport.h"

namespace host {

/// What a fact of an outcome is about, in the order in which expectations and differences list them.
enum class FactKind { ExitStatus, Step, Alert, Preference, FinderFlags, Entry };

/// Names one fact.
struct FactName {
    FactKind kind;
    /// Step: "pre" or "post". Alert: its number, from "1". Preference: the domain, or the path of a property list
    /// outside /Library/Preferences. FinderFlags, Entry: the path. ExitStatus: empty.
    std::string subject;
    std::string key;  ///< of a preference
};

inline bool operator<(const FactName& a, const FactName& b) {
    if (a.kind == FactKind::Step && b.kind == FactKind::Step) {
        return a.subject > b.subject;  // "pre" comes first
    }
    return std::tie(a.kind, a.subject, a.key) < std::tie(b.kind, b.subject, b.key);
}

/// What an outcome comes to in one respect.
struct Fact {
    /// A typed value for a preference, a number for the exit status and for Finder flags, a text for others; null for
    /// what is not there.
    TypedValue value;
    bool isChange = true;  ///< whether the run brought it about; false for what is as it was before
};

using Facts = std::map<FactName, Fact>;

/// The facts of a run's document that count in a comparison: what became of the steps and what is on the disk, but no
/// times, sizes, owners or modes. The exit statuses 8 and 10 count as 0: they say how a run was judged. Throws
/// nlohmann::json::exception or std::invalid_argument when it is no such document.
Facts factsOf(const Json& runDocument);

/// The facts as an expectation's file has them: an object for each kind, and in it what becomes of what. A value of a
/// preference is written plainly where JSON has such a type: "fr", 2, 1.5, true.
Json toJson(const Facts& facts);

/// The facts of such an object; members that are no kind of fact are left out. Throws std::invalid_argument, which says
/// what is wrong with it.
Facts factsFrom(const Json& object);

/// Whether `member` is the name of a kind of fact in such an object.
bool isKindOfFact(const std::string& member);

}  // namespace host
