#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "installer-host/Judgement.h"
#include "installer-host/RunResult.h"
#include "installer-host/look/Snapshot.h"

namespace host {

// The reports for a program: one JSON object each, as docs/report.schema.json describes it.

using Json = nlohmann::ordered_json;

/// The document as it is printed, in ASCII. Bytes of names and preferences that are not UTF-8 become U+FFFD.
std::string jsonText(const Json& document);

/// What every document begins and ends with. The end says what the command came to.
Json beginDocument(std::optional<Command> command);
Json endDocument(Json document, const Judgement& judgement);

/// `judgement` is what the run or the check comes to. A run's "expectation" is null; who compares, fills it in.
Json runDocument(const RunResult& result, const Judgement& judgement);
Json checkDocument(const RunResult& result, const Judgement& judgement);

/// `snapshot` is what select() left of it. A root is empty for the machine itself.
Json showDocument(const Snapshot& snapshot, const std::string& root, const Selection& selection,
                  const Judgement& judgement);
Json diffDocument(const SnapshotDiff& diff, const std::string& first, const std::string& second,
                  const Selection& selection, const Judgement& judgement);

/// What there is to say when something went wrong before there was anything to report. `command` is unset when the
/// command line did not come to one.
Json errorDocument(std::optional<Command> command, const Judgement& judgement);

}  // namespace host
