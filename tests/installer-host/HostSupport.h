#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/PrivateRoot.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace test {

/// The program, the plug-in and the plug-ins with faults of this build.
extern const std::string HOST_PROGRAM;
extern const std::string PLUGIN_BUNDLE;
extern const std::string FAULTY_BUNDLE;
extern const std::string UNLINKED_BUNDLE;

/// A private root with what the plug-in reads and changes.
class InstallRoot : public PrivateRoot {
public:
    std::string preferenceFile(const std::string& domain) const;

    /// Writes the install-status file, which the post-install step reads.
    void writeStatus(const std::string& bytes) const;
    std::string statusPath() const;

    /// Makes the vendor's folder and the icon file in it.
    void makeVendorFolder() const;
};

/// What another program, Python, reads in a root that installations were made in:
/// {"preferences": {DOMAIN: {KEY: [PYTHON TYPE, VALUE]}}, "finder": {NAME: Finder information in hexadecimal digits}}.
/// Throws std::runtime_error when it finds a file damaged.
nlohmann::json readRoot(const std::string& path);

/// Gives a file or folder Finder information, written as setfattr(1) takes it.
void setFinderInfo(const std::string& path, const std::string& value);

/// The same result, its report kept when it is JSON: check-reports holds all reports of the tests to their schema.
ProcessResult kept(ProcessResult result);

/// Keeps a copy of a journal, for the same.
void keepJournal(const std::string& path);

/// Runs the program with these arguments and without a display.
ProcessResult runHost(const std::vector<std::string>& arguments, ProcessOptions options = {});

/// The program and the plug-in for an ordinary user, who may be unable to reach this build's folder.
class OrdinaryUser {
public:
    OrdinaryUser();

    /// Gives the user all that is in the folder.
    void own(const std::string& path) const;

    ProcessResult runHost(std::vector<std::string> arguments) const;

    std::string bundle() const { return programs_ / "CorvaneInstall.bundle"; }

private:
    TempDir programs_;
    ProcessOptions options_;
};

/// `run --product 5100` of the plug-in in a root, and more arguments.
ProcessResult install(const InstallRoot& root, const std::vector<std::string>& more = {},
                      const ProcessOptions& options = {});

}  // namespace test
