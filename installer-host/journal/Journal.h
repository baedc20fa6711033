#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/journal/Inventory.h"

namespace host {

/// One journal among others: where it lies, and the random identifier that no other journal has.
struct JournalName {
    std::string path;  ///< absolute
    std::string id;
};

/// What undoing one run takes. docs/journal.schema.json describes it as a file.
struct Journal {
    enum class State {
        Begun,     ///< nothing was changed yet, and nothing of the root is known
        Prepared,  ///< the steps were to be run: `inventory` tells what stood in the root before them
        Complete,  ///< the run ended: `edits` tells what it changed
        Undone     ///< and that was undone
    };

    JournalName name;
    State state = State::Begun;
    std::string root;                     ///< an absolute path; empty: the machine itself
    std::optional<JournalName> previous;  ///< of the run before it that was not undone; unset: there was none
    std::string started;                  ///< when the run began, in ISO 8601
    std::string bundle;                   ///< an absolute path
    std::int32_t product = 0;
    std::int32_t language = 0;
    std::vector<std::string> scope;  ///< the folders that were looked at
    Inventory inventory;             ///< of Prepared
    Edits edits;                     ///< of Complete and Undone
    std::vector<NotHeld> notHeld;    ///< of Complete and Undone
    std::string undone;              ///< of Undone: when, in ISO 8601
};

/// The journal as a file holds it. It ends with a line feed.
std::string journalText(const Journal& journal);

/// The journal that the text tells; its name has no path. Throws std::exception when the text is not a journal of a
/// version that this program reads: the exception's text says why, to end a sentence with.
Journal journalFrom(const std::string& text);

}  // namespace host
