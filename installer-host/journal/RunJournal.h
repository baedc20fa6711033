#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "installer-host/journal/Journal.h"
#include "installer-host/journal/JournalFile.h"
#include "installer-host/journal/RootRecord.h"
#include "installer-host/look/Changes.h"
#include "platform/Result.h"

namespace host {

/// The journal of one run, from before its first look on. When it is destroyed before prepare(), nothing was changed:
/// the file is removed, and the record of the root is as it was.
class RunJournal {
public:
    /// Makes the file at `path` and puts it on record. `journal` says what is run where; its name, state and previous
    /// journal are set here. `endIfInterrupted` is called while another process has the lock of the file's folder; what
    /// it throws ends the wait. Throws Failure when that cannot be done, and where RootRecord::requireOutside does.
    RunJournal(const std::string& path, Journal journal, const RootFolder& root,
               const std::function<void()>& endIfInterrupted);
    ~RunJournal();
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    /// The journal's absolute path.
    const std::string& path() const { return file_->path(); }

    /// Writes what stands in the root, before the first step. Throws Failure when that fails.
    void prepare(const Tree& before);

    /// What the journal can put back and what not, a sentence each, for the user before the first step.
    std::vector<std::string> promises() const;

    /// Cuts the journal down to what the run changed. Returns what went wrong; the journal then still tells what stood
    /// in the root before the run. It does so, too, when this throws what `endIfInterrupted` threw.
    std::optional<cv::Fault> complete(const Tree& after, const Changes& changes);

    /// The run came to nothing: forgets it when the second look shows that nothing was changed.
    void abandonIfUnchanged(const Tree& before, const Tree& after);

private:
    void abandon() noexcept;

    Journal journal_;
    std::optional<RootRecord> record_;
    std::optional<JournalFile> file_;
};

}  // namespace host
