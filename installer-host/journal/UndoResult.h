#pragma once

#include <string>
#include <vector>

#include "installer-host/journal/Journal.h"

namespace host {

/// One thing that a run changed, put back or left alone.
struct UndoItem {
    enum class What {
        Key,        ///< of a property list: `name`; from and to are values, null for a key that is not there
        File,       ///< a property list as a whole: from or to is null where there is none
        Contents,   ///< a property list's form, while its values stay: XML or binary
        Mode,       ///< four octal digits
        Owner,      ///< OWNER:GROUP
        Attribute,  ///< an extended attribute: `name`; from and to are hexadecimal digits, or null
        Folder,     ///< that the run made
        Other       ///< what the journal does not hold: `name` says what it is
    };

    What what;
    std::string path;  ///< as seen from inside the root
    std::string name;
    TypedValue from;     ///< what the run left
    TypedValue to;       ///< what stood there before the run
    std::string reason;  ///< of something left alone: why, to end a sentence with
    bool isFault;        ///< it was left because putting it back failed
};

/// What an undo did, or in a dry run would do.
struct UndoResult {
    Journal journal;  ///< as it was before
    std::string root;
    bool dryRun = false;
    std::vector<UndoItem> restored;
    std::vector<UndoItem> left;

    /// Whether something could not be put back because the system refused.
    bool hasFaults() const;
};

}  // namespace host
