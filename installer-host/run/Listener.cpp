#include "installer-host/run/Listener.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>

#include "installer-host/Message.h"
#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/Confinement.h"
#include "installer-host/run/Transcript.h"
#include "installer-host/run/WorkerProtocol.h"
#include "platform/Descriptor.h"

namespace host {

namespace {

/// The pipe for the worker's events, and how far it was read.
class EventPipe {
public:
    /// `onStart` is called when the worker has said that it runs.
    EventPipe(Transcript& transcript, std::function<void()> onStart)
        : transcript_(transcript), onStart_(std::move(onStart)) {}

    int childEnd() const { return pipe_.write.get(); }

    Watcher watcher() {
        return {pipe_.read.get(), [this] {
                    std::array<char, 4096> buffer;
                    const ssize_t count = read(pipe_.read.get(), buffer.data(), buffer.size());
                    return count <= 0 || hear({buffer.data(), static_cast<std::size_t>(count)}) ? Watching::GoOn
                                                                                                : Watching::EndChild;
                }};
    }

private:
    bool hear(std::string_view bytes) {
        text_ += bytes;
        std::size_t start = 0;
        for (std::size_t end; (end = text_.find('\n', start)) != std::string::npos; start = end + 1) {
            const bool isFirst = !transcript_.hasStarted();
            if (!transcript_.hear(std::string_view(text_).substr(start, end - start))) {
                return false;
            }
            if (isFirst) {
                onStart_();
            }
        }
        text_.erase(0, start);
        if (text_.size() < LONGEST_EVENT) {
            return true;
        }
        transcript_.hearEndlessLine();
        return false;
    }

    Transcript& transcript_;
    std::function<void()> onStart_;
    Pipe pipe_;
    std::string text_;
};

/// The worker's program. Its place relative to this program is the same in the build folder and when installed.
std::string workerProgram() {
    namespace fs = std::filesystem;
    const fs::path ownFolder = fs::read_symlink("/proc/self/exe").parent_path();
    std::string program = ownFolder.parent_path() / INSTALLER_HOST_LIBEXEC_FOLDER / "installer-host-worker";
    if (access(program.c_str(), X_OK) != 0) {
        throw Failure(
            ExitStatus::RootNotMade,
            "the program that runs the bundle's code cannot be started: '" + program + "': " + cv::errorText(errno),
            "It is part of installer-host; build or install installer-host again.");
    }
    return program;
}

/// A command as a shell would take it.
std::string commandText(const std::vector<std::string>& command) {
    std::string text;
    for (const std::string& word : command) {
        const bool isPlain =
            !word.empty() &&
            word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./=:,+@%") ==
                std::string::npos;
        std::string quoted = word;
        for (std::size_t at = quoted.find('\''); at != std::string::npos; at = quoted.find('\'', at + 4)) {
            quoted.replace(at, 1, "'\\''");
        }
        text += (text.empty() ? "" : " ") + (isPlain ? word : "'" + quoted + "'");
    }
    return text;
}

}  // namespace

RunResult runWorker(const Options& options, const RootFolder* root) {
    Transcript transcript(options);
    Confinement confinement(options, root, workerProgram());
    EventPipe events(transcript, [&] { confinement.workerStarted(); });
    const WorkerOrder order{events.childEnd(), confinement.bundle(), options.installation};
    ChildOrder child = confinement.order(toArguments(order), {events.childEnd()});
    child.watchers.insert(child.watchers.begin(), events.watcher());
    remark(Talk::Detailed, "starting " + commandText(child.command));
    const ChildEnd end = runChild(child);
    if (!transcript.hasStarted() && end.how == ChildEnd::How::ByItself) {
        throw confinement.refusal();
    }
    RunResult result = transcript.finish(end);
    confinement.complete(result);
    return result;
}

}  // namespace host
