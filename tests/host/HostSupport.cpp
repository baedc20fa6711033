#include "tests/host/HostSupport.h"

#include <stdexcept>

namespace test {

const std::string HOST_PROGRAM = CV_HOST_PROGRAM;
const std::string PLUGIN_BUNDLE = CV_PLUGIN_BUNDLE;
const std::string FAULTY_BUNDLE = CV_FIXTURES "/FaultyPlugIn.bundle";
const std::string UNLINKED_BUNDLE = CV_FIXTURES "/UnlinkedPlugIn.bundle";

std::string InstallRoot::preferenceFile(const std::string& domain) const {
    return *this / ("Library/Preferences/" + domain + ".plist");
}

std::string InstallRoot::statusPath() const {
    return *this / "Library/Application Support/Corvane/Updater/install_status.txt";
}

void InstallRoot::writeStatus(const std::string& bytes) const {
    writeFile(statusPath(), bytes);
}

void InstallRoot::makeVendorFolder() const {
    writeFile(*this / "Applications/Corvane/Icon\r", "");
}

std::vector<nlohmann::json> readRoots(const std::vector<std::string>& paths) {
    std::vector<std::string> command{"python3", CV_READ_ROOT_SCRIPT};
    command.insert(command.end(), paths.begin(), paths.end());
    const ProcessResult result = run(command);
    if (result.exitStatus != 0) {
        throw std::runtime_error("read_root.py: " + result.err);
    }
    return nlohmann::json::parse(result.out).get<std::vector<nlohmann::json>>();
}

nlohmann::json readRoot(const std::string& path) {
    return readRoots({path}).front();
}

ProcessResult runHost(const std::vector<std::string>& arguments, ProcessOptions options) {
    options.unset.emplace_back("DISPLAY");
    std::vector<std::string> command{HOST_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, options);
}

ProcessResult install(const InstallRoot& root, const std::vector<std::string>& more, const ProcessOptions& options) {
    std::vector<std::string> arguments{"run", "--product=5100", "--root=" + root.path(), PLUGIN_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runHost(arguments, options);
}

}  // namespace test
