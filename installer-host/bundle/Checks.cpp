#include "installer-host/bundle/Checks.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "installer-host/bundle/BundleSession.h"
#include "installer-host/bundle/DynamicSymbols.h"

namespace host {

namespace {

/// The one export that is data.
constexpr const char* PLUGIN_ID = XCOD_EXPORTS[std::size(XCOD_EXPORTS) - 1];

constexpr CFUUIDBytes IUNKNOWN_ID{0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
/// An identifier that no interface and no plug-in type has.
constexpr CFUUIDBytes NOBODYS_ID{0x3B, 0x8E, 0x6F, 0x02, 0x5D, 0x11, 0x4C, 0x0A,
                                 0x9E, 0x77, 0x2C, 0x41, 0xD0, 0x95, 0xAB, 0x10};

std::string textOf(CFStringRef string) {
    char buffer[256];
    const bool fits = string != nullptr && CFGetTypeID(string) == CFStringGetTypeID() &&
                      CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8);
    return fits ? buffer : "";
}

std::string textOf(CFUUIDRef identifier) {
    return textOf(cv::CFReference<CFStringRef>(CFUUIDCreateString(kCFAllocatorDefault, identifier)).get());
}

class Checker {
public:
    explicit Checker(const std::function<void(const Finding&)>& tell) : tell_(tell) {}

    void run(const std::string& path) {
        try {
            const BundleSession session(path);
            find("bundle", true, textOf(CFBundleGetIdentifier(session.bundle())));
            if (checkRegistration(session) && checkCode(session)) {
                checkInterface(session);
            }
        } catch (const Failure& failure) {
            find("bundle", false, failure.what(), failure.status());
        }
    }

private:
    bool find(const char* subject, bool ok, const std::string& text,
              ExitStatus statusWhenNot = ExitStatus::BundleUnusable) {
        tell_({subject, ok, text, ok ? ExitStatus::Done : statusWhenNot});
        return ok;
    }

    bool checkRegistration(const BundleSession& session) {
        const CFDictionaryRef info = CFBundleGetInfoDictionary(session.bundle());
        const auto dynamic = static_cast<CFStringRef>(CFDictionaryGetValue(info, kCFPlugInDynamicRegistrationKey));
        find("registration", textOf(dynamic) == "NO", "CFPlugInDynamicRegistration is the string NO");
        const std::vector<CFUUIDRef> factories = session.factories();
        if (factories.empty()) {
            return find("registration", false, "no factory for plug-in type " + textOf(XCodPlugInTypeID()),
                        ExitStatus::InterfaceRefused);
        }
        const CFUUIDRef factory = factories.front();
        find("registration", true, "factory " + textOf(factory) + " for plug-in type " + textOf(XCodPlugInTypeID()));
        const bool ownIdentifier = !CFEqual(factory, XCodPlugInTypeID()) && !CFEqual(factory, XCodInterfaceID());
        find("identifiers", ownIdentifier, "the factory's identifier differs from the type's and the interface's");
        return true;
    }

    bool checkCode(const BundleSession& session) {
        try {
            session.load();
        } catch (const Failure& failure) {
            return find("code", false, failure.what());
        }
        find("code", true, "loads");
        const void* anyAddress = nullptr;
        for (const char* name : XCOD_EXPORTS) {
            const void* address = addressOf(session, name);
            find("exports", address != nullptr, name);
            anyAddress = address != nullptr ? address : anyAddress;
        }
        checkNoOtherExports(anyAddress);
        if (const void* pluginID = addressOf(session, PLUGIN_ID)) {
            std::int32_t value = 0;
            std::memcpy(&value, pluginID, sizeof value);
            find("identifiers", value == 0, std::string(PLUGIN_ID) + " is " + std::to_string(value));
        }
        return true;
    }

    static const void* addressOf(const BundleSession& session, const char* name) {
        if (name == std::string(PLUGIN_ID)) {
            return CFBundleGetDataPointerForName(session.bundle(), makeString(name).get());
        }
        return session.exportedFunction(name);
    }

    void checkNoOtherExports(const void* anyAddress) {
        std::string others;
        for (const std::string& name : exportedSymbols(anyAddress)) {
            if (std::find(std::begin(XCOD_EXPORTS), std::end(XCOD_EXPORTS), name) == std::end(XCOD_EXPORTS)) {
                others += (others.empty() ? "" : ", ") + name;
            }
        }
        find("exports", others.empty(), others.empty() ? "no other names" : "also exported: " + others);
    }

    void checkInterface(const BundleSession& session) {
        const auto refused = [this](const std::string& text) {
            find("interface", false, text, ExitStatus::InterfaceRefused);
        };
        void* made = CFPlugInInstanceCreate(kCFAllocatorDefault, session.factories().front(), XCodPlugInTypeID());
        if (made == nullptr) {
            refused("the factory made no instance");
            return;
        }
        const auto instance = static_cast<const XCodFunctionBlock**>(made);
        const XCodFunctionBlock& table = **instance;
        if (table.QueryInterface == nullptr || table.AddRef == nullptr || table.Release == nullptr ||
            table.XCodMain == nullptr) {
            refused("a slot of the interface table is empty");
            return;
        }
        find("interface", table._reserved == nullptr, "the table's first slot is reserved and null",
             ExitStatus::InterfaceRefused);
        checkAnswer(instance, "the installer interface " + textOf(XCodInterfaceID()),
                    CFUUIDGetUUIDBytes(XCodInterfaceID()), true);
        checkAnswer(instance, "IUnknown", IUNKNOWN_ID, true);
        checkAnswer(instance, "an unknown interface", NOBODYS_ID, false);
        const ULONG added = table.AddRef(instance);
        const ULONG released = table.Release(instance);
        const ULONG last = table.Release(instance);
        find("interface", added == 2 && released == 1 && last == 0, "references are counted: 2, 1, 0",
             ExitStatus::InterfaceRefused);
    }

    void checkAnswer(const XCodFunctionBlock** instance, const std::string& name, CFUUIDBytes identifier, bool known) {
        void* found = &found;
        const HRESULT answer = (*instance)->QueryInterface(instance, identifier, &found);
        const bool given = answer == S_OK && found != nullptr;
        const bool refused = answer == E_NOINTERFACE && found == nullptr;
        find("interface", known ? given : refused, name + (known ? " is given" : " is refused"),
             ExitStatus::InterfaceRefused);
        if (given) {
            (*instance)->Release(instance);
        }
    }

    const std::function<void(const Finding&)>& tell_;
};

}  // namespace

void checkBundle(const std::string& path, const std::function<void(const Finding&)>& tell) {
    Checker(tell).run(path);
}

}  // namespace host
