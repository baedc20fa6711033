#include "installer-host/run/Confinement.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

namespace host {

namespace {

/// Where the program that shows alerts on a display is, as seen from the worker's.
std::string panelProgram(const std::string& program) {
    return std::filesystem::path(program).parent_path().parent_path() / INSTALLER_HOST_LIB_FOLDER /
           "CvPlatform/cv-alert";
}

}  // namespace

Confinement::Confinement(const Options& options, const RootFolder* root, const std::string& program)
    : timeout_(options.timeout),
      bundle_(options.bundle),
      program_(program),
      alerts_(options.bundle, panelProgram(program)),
      first_([this](pid_t process) { limits_.apply(process); }) {
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
    // A pipe is nobody's, unlike the machine's /dev/null; from this one the worker reads its go, and nothing else.
    fcntl(input_.read.get(), F_SETFL, 0);
    order.input = input_.read.get();
    order.output = output_.childEnd();
    order.descriptors = descriptors;
    order.descriptors.push_back(alerts_.socket());
    order.timeout = timeout_;
    order.watchers = alerts_.watchers();
    order.watchers.push_back(output_.watcher());
    order.watchers.push_back(left_.watcher());
    if (sandbox_) {
        order.isApart = true;
        order.prepare = [this] { return sandbox_->prepare(); };
        const std::vector<int> needed = sandbox_->descriptors();
        order.descriptors.insert(order.descriptors.end(), needed.begin(), needed.end());
        order.descriptors.insert(order.descriptors.end(), {first_.info(), first_.go()});
        order.watchers.push_back(first_.watcher());
    }
    order.endOthers = [this] {
        alerts_.end();
        left_.look();
        first_.end();
    };
    return order;
}

void Confinement::workerStarted() {
    left_.begin(sandbox_ ? first_.process() : getpid());
    static_cast<void>(cv::writeAll(input_.write.get(), "g"));
    input_.write = cv::Descriptor();
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
    if (!result.steps.empty()) {
        result.leftProcesses = left_.names();
    }
    if (!sandbox_) {
        result.limits = {"none but the time-out: the bundle's code was not confined"};
        return;
    }
    result.limits = limits_.sentences(timeout_);
    if (!sandbox_->hasDevices()) {
        result.limits.emplace_back("devices: none can be opened, not even /dev/null");
    }
}

}  // namespace host
