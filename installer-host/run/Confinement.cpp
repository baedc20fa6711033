#include "installer-host/run/Confinement.h"

#include <filesystem>

namespace host {

namespace {

/// Where the program that shows alerts on a display is, as seen from the worker's.
std::string panelProgram(const std::string& program) {
    return std::filesystem::path(program).parent_path().parent_path() / INSTALLER_HOST_LIB_FOLDER /
           "CvPlatform/cv-alert";
}

/// What has nothing to read and is nobody's: /dev/null would be the machine's.
cv::Descriptor emptyInput() {
    Pipe pipe;
    return std::move(pipe.read);
}

}  // namespace

Confinement::Confinement(const Options& options, const RootFolder* root, const std::string& program)
    : timeout_(options.timeout),
      bundle_(options.bundle),
      program_(program),
      alerts_(options.bundle, panelProgram(program)),
      first_([this](pid_t process) { limits_.apply(process); }),
      nothing_(emptyInput()) {
    if (root == nullptr || !root->isMachine()) {
        sandbox_.emplace(root);
        bundle_ = sandbox_->showBundle(options.bundle);
        program_ = sandbox_->showWorker(program);
        sandbox_->setVariable("CV_ALERT_SOCKET", std::to_string(alerts_.socket()));
    }
}

std::vector<std::string> Confinement::command(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{program_};
    command.insert(command.end(), arguments.begin(), arguments.end());
    if (sandbox_) {
        return sandbox_->wrap(command, first_.info(), first_.go());
    }
    command.insert(command.begin(), {"env", "CV_ALERT_SOCKET=" + std::to_string(alerts_.socket())});
    return command;
}

ChildOrder Confinement::order(const std::vector<std::string>& arguments, const std::vector<int>& descriptors) {
    ChildOrder order;
    order.command = command(arguments);
    order.input = nothing_.get();
    order.output = output_.childEnd();
    order.descriptors = descriptors;
    order.descriptors.push_back(alerts_.socket());
    order.timeout = timeout_;
    order.watchers = alerts_.watchers();
    order.watchers.push_back(output_.watcher());
    if (sandbox_) {
        const std::vector<int> needed = sandbox_->descriptors();
        order.descriptors.insert(order.descriptors.end(), needed.begin(), needed.end());
        order.descriptors.insert(order.descriptors.end(), {first_.info(), first_.go()});
        order.watchers.push_back(first_.watcher());
    }
    order.endOthers = [this] {
        first_.end();
        alerts_.end();
    };
    return order;
}

Failure Confinement::refusal() const {
    if (sandbox_) {
        return sandboxRefused(output_.lastLine());
    }
    const std::string said = output_.lastLine();
    return {ExitStatus::RootNotMade,
            "the worker, which runs the bundle's code, could not be started" + (said.empty() ? "" : ": " + said)};
}

void Confinement::complete(RunResult& result) const {
    result.alerts = alerts_.records();
    result.limits = sandbox_ ? limits_.sentences(timeout_)
                             : std::vector<std::string>{"none but the time-out: the bundle's code was not confined"};
}

}  // namespace host
