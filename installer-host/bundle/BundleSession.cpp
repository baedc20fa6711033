#include "installer-host/bundle/BundleSession.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

#include "CvBase/Mac/AutoreleasePool.h"
#include "CvBase/common/common_exception_base.h"
#include "platform/BundleProblem.h"

namespace host {

namespace {

cv::CFReference<CFURLRef> makeURL(const std::string& path) {
    const auto* bytes = reinterpret_cast<const UInt8*>(path.data());
    return cv::CFReference<CFURLRef>(
        CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, bytes, static_cast<CFIndex>(path.size()), true));
}

std::string demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 ? text.get() : name;
}

/// The exception that is being handled.
CallResult describeException() {
    CallResult result;
    result.threw = true;
    if (std::current_exception() == nullptr) {
        // Not thrown by C++, so C++ can learn nothing about it.
        result.exceptionType = "an exception of another language";
        return result;
    }
    result.exceptionType = demangled(abi::__cxa_current_exception_type()->name());
    try {
        throw;
    } catch (const ::Exception::Base& exception) {
        const char* message = exception.GetMessage().CStr();
        result.exceptionMessage = message == nullptr ? "" : message;
    } catch (const std::exception& exception) {
        result.exceptionMessage = exception.what();
    } catch (...) {
        // Other types carry no message.
    }
    return result;
}

StepFunction exportedStep(const BundleSession& session, Step step) {
    const char* name = step == Step::PreInstall ? "PreInstall" : "PostInstall";
    void* function = session.exportedFunction(name);
    if (function == nullptr) {
        throw Failure(ExitStatus::BundleUnusable, std::string("the bundle's code exports no function ") + name);
    }
    return reinterpret_cast<StepFunction>(function);
}

}  // namespace

cv::CFReference<CFStringRef> makeString(const std::string& text) {
    return cv::CFReference(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
}

BundleSession::BundleSession(const std::string& path)
    : plugIn_(CFPlugInCreate(kCFAllocatorDefault, makeURL(path).get())) {
    if (!plugIn_) {
        throw Failure(ExitStatus::BundleUnusable, "this is not a plug-in: " + cv::bundleProblem());
    }
    factories_ =
        cv::CFReference<CFArrayRef>(CFPlugInFindFactoriesForPlugInTypeInPlugIn(XCodPlugInTypeID(), plugIn_.get()));
}

std::vector<CFUUIDRef> BundleSession::factories() const {
    std::vector<CFUUIDRef> factories;
    const CFIndex count = factories_ ? CFArrayGetCount(factories_.get()) : 0;
    for (CFIndex i = 0; i < count; ++i) {
        factories.push_back(static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories_.get(), i)));
    }
    return factories;
}

void BundleSession::load() const {
    if (!CFBundleLoadExecutable(bundle())) {
        throw Failure(ExitStatus::BundleUnusable, "the code cannot be loaded: " + cv::bundleProblem());
    }
}

void* BundleSession::exportedFunction(const char* name) const {
    return CFBundleGetFunctionPointerForName(bundle(), makeString(name).get());
}

StepEntries::StepEntries(const BundleSession& session, const Installation& installation) {
    const std::vector<CFUUIDRef> factories = session.factories();
    if (!installation.direct && factories.empty()) {
        throw Failure(ExitStatus::InterfaceRefused,
                      std::string("the bundle registers no factory for the installer's plug-in type ") +
                          XCOD_PLUGIN_TYPE_ID + " (CFPlugInTypes in its Info.plist)");
    }
    session.load();
    if (installation.direct) {
        for (const Step step : installation.steps) {
            functions_[step] = exportedStep(session, step);
        }
        return;
    }
    void* instance = CFPlugInInstanceCreate(kCFAllocatorDefault, factories.front(), XCodPlugInTypeID());
    if (instance == nullptr) {
        throw Failure(ExitStatus::InterfaceRefused, "the bundle's factory made no instance of the installer plug-in");
    }
    const auto unknown = static_cast<const XCodFunctionBlock**>(instance);
    void* found = nullptr;
    const HRESULT answer = (*unknown)->QueryInterface(unknown, CFUUIDGetUUIDBytes(XCodInterfaceID()), &found);
    (*unknown)->Release(unknown);
    if (answer != S_OK || found == nullptr) {
        throw Failure(ExitStatus::InterfaceRefused,
                      std::string("the plug-in refused the installer interface ") + XCOD_INTERFACE_ID);
    }
    interface_ = static_cast<const XCodFunctionBlock**>(found);
}

StepEntries::~StepEntries() {
    if (interface_ != nullptr) {
        (*interface_)->Release(interface_);
    }
}

CallResult callStep(StepFunction step, XCodParamBlock* block) {
    const cv::AutoreleasePool pool;
    try {
        step(block);
        return {};
    } catch (...) {
        return describeException();
    }
}

}  // namespace host
