#pragma once

#include <map>
#include <string>
#include <vector>

#include "CvBase/Mac/CFReference.h"
#include "installer-host/ExitStatus.h"
#include "installer-host/Installation.h"
#include "plugin/InstallerInterface.h"

namespace host {

/// A string of the UTF-8 text; null when it is not UTF-8.
cv::CFReference<CFStringRef> makeString(const std::string& text);

/// A step as it is called.
using StepFunction = void (*)(XCodParamBlock* block);

/// A plug-in that is open: registered, and loaded on demand. The code stays loaded for as long as the process lives, so
/// an instance can be released and an exception looked at whenever.
class BundleSession {
public:
    /// Registers the bundle at the absolute path `path`. Throws Failure (BundleUnusable) when it is not a bundle.
    explicit BundleSession(const std::string& path);

    /// The factories that the bundle registers for the installer's plug-in type.
    std::vector<CFUUIDRef> factories() const;

    /// Loads the code. Throws Failure (BundleUnusable) with the reason when that fails.
    void load() const;

    /// The address of an exported function of the loaded code; null when it exports none of that name.
    void* exportedFunction(const char* name) const;

    CFBundleRef bundle() const { return CFPlugInGetBundle(plugIn_.get()); }

private:
    cv::CFReference<CFPlugInRef> plugIn_;
    cv::CFReference<CFArrayRef> factories_;
};

/// The steps of an open plug-in, through the interface table of an instance or as exported functions.
class StepEntries {
public:
    /// Gets the interface, or finds the functions of a direct installation's steps. Throws Failure: InterfaceRefused
    /// when the factory or the interface is refused, BundleUnusable when the code cannot be loaded or lacks a function.
    StepEntries(const BundleSession& session, const Installation& installation);

    /// Releases the interface.
    ~StepEntries();
    StepEntries(const StepEntries&) = delete;
    StepEntries& operator=(const StepEntries&) = delete;

    /// What to call for `step`, one of the installation's.
    StepFunction entry(Step step) const {
        return interface_ != nullptr ? (*interface_)->XCodMain : functions_.at(step);
    }

private:
    const XCodFunctionBlock** interface_ = nullptr;
    std::map<Step, StepFunction> functions_;
};

/// How a call into a plug-in ended.
struct CallResult {
    bool threw = false;
    std::string exceptionType;     ///< as a C++ programmer writes it
    std::string exceptionMessage;  ///< empty for a type that carries none
};

/// Calls `step` with an autorelease pool around it, as an application's event loop has one, and lets no exception out.
CallResult callStep(StepFunction step, XCodParamBlock* block);

}  // namespace host
