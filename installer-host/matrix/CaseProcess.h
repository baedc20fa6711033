#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "installer-host/matrix/CaseList.h"
#include "installer-host/matrix/MatrixResult.h"
#include "installer-host/run/ChildProcess.h"

namespace host {

/// What every case of a matrix is run with.
struct CaseSettings {
    const Options& options;                         ///< the matrix's
    const std::string& root;                        ///< what each case gets a copy of
    const std::optional<Expectation>& expectation;  ///< may be none
    const CaseList& list;
};

/// A case that runs in a process of its own, because a run changes what belongs to a whole process: its working folder,
/// its children, its standard descriptors. It has no terminal and no display, so nobody answers its alerts. It takes
/// its copy of the root away before it ends, also when this process is killed; the destructor ends and awaits it.
class CaseProcess {
public:
    /// Starts list.cases[index]. Throws std::system_error.
    CaseProcess(const CaseSettings& settings, std::size_t index);
    ~CaseProcess();
    CaseProcess(const CaseProcess&) = delete;
    CaseProcess& operator=(const CaseProcess&) = delete;

    /// The place of the case in the list.
    std::size_t index() const { return index_; }

    /// What can be read while it runs: the report, and what it says; the second is -1 once nothing more comes.
    int reportEnd() const { return report_.read.get(); }
    int messagesEnd() const { return messages_.read.get(); }

    /// Reads what there is. False once the case is over.
    bool hear();

    /// Asks the process to end as if the user had ended that run.
    void end(int signal) const;

    /// What became of the case, which is over.
    CaseResult finish();

private:
    std::size_t index_;
    Pipe report_, messages_;
    std::string reportText_, messagesText_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    pid_t pid_ = 0;
};

}  // namespace host
