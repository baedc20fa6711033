#include "tests/installer-host/HostSupport.h"

#include <unistd.h>

#include <filesystem>
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

nlohmann::json readRoot(const std::string& path) {
    const char* const script = R"(
import json, os, pathlib, plistlib, sys
root = pathlib.Path(sys.argv[1])
preferences = {}
for file in (root / "Library/Preferences").glob("*.plist"):
    keys = plistlib.loads(file.read_bytes())
    preferences[file.stem] = {key: [type(value).__name__, value] for key, value in keys.items()}
attribute = "user.com.apple.FinderInfo"
places = [root / "Applications/Corvane", root / "Applications/Corvane/Icon\r"]
marked = [place for place in places if place.exists() and attribute in os.listxattr(place)]
finder = {place.name: os.getxattr(place, attribute).hex() for place in marked}
json.dump({"preferences": preferences, "finder": finder}, sys.stdout))";
    const ProcessResult result = run({"python3", "-c", script, path});
    if (result.exitStatus != 0) {
        throw std::runtime_error(result.err);
    }
    return nlohmann::json::parse(result.out);
}

void setFinderInfo(const std::string& path, const std::string& value) {
    const ProcessResult result = run({"setfattr", "-n", "user.com.apple.FinderInfo", "-v", value, path});
    if (result.exitStatus != 0) {
        throw std::runtime_error(result.err);
    }
}

namespace {

/// The name of one more file to keep.
std::string nextName() {
    static int number = 0;
    return "/" + std::to_string(getpid()) + "-" + std::to_string(++number) + ".json";
}

}  // namespace

ProcessResult kept(ProcessResult result) {
    if (result.out.compare(0, 2, "{\n") == 0) {  // not the value of a dictionary, which is one line
        writeFile(CV_REPORTS + nextName(), result.out);
    }
    return result;
}

void keepJournal(const std::string& path) {
    writeFile(CV_JOURNALS + nextName(), readFile(path));
}

ProcessResult runHost(const std::vector<std::string>& arguments, ProcessOptions options) {
    options.unset.insert(options.unset.end(), {"DISPLAY", "WAYLAND_DISPLAY"});
    std::vector<std::string> command{HOST_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return kept(run(command, options));
}

OrdinaryUser::OrdinaryUser() {
    ProcessOptions inBuild;
    inBuild.workingFolder = std::filesystem::path(HOST_PROGRAM).parent_path().parent_path();
    const ProcessResult copied = run({"cp", "-rL", "--parents", "bin/installer-host", "lib/libCvPlatform.so.1",
                                      "libexec", "CorvaneInstall.bundle", programs_.path()},
                                     inBuild);
    if (copied.exitStatus != 0) {
        throw std::runtime_error(copied.err);
    }
    options_.set = {{"LD_LIBRARY_PATH", programs_ / "lib"}};
    options_.unset = {"DISPLAY", "WAYLAND_DISPLAY"};
    options_.user = geteuid() == 0 ? 65534 : 0;
    own(programs_.path());
}

void OrdinaryUser::own(const std::string& path) const {
    if (options_.user != 0) {
        run({"chown", "-h", "-R", "65534:65534", path});
    }
}

ProcessResult OrdinaryUser::runHost(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), programs_ / "bin/installer-host");
    return kept(run(arguments, options_));
}

ProcessResult install(const InstallRoot& root, const std::vector<std::string>& more, const ProcessOptions& options) {
    std::vector<std::string> arguments{"run", "--product=5100", "--root=" + root.path(), PLUGIN_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runHost(arguments, options);
}

}  // namespace test
