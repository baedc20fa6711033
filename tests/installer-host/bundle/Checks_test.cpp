#include "installer-host/bundle/Checks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "plugin/InstallerInterface.h"
#include "tests/installer-host/HostSupport.h"

namespace {

using namespace host;
using namespace test;

/// A bundle with the faulty plug-in's code and its Info.plist, in which `text` is another one.
std::string bundleWith(const TempDir& folder, const std::string& text, const std::string& other) {
    std::string bundle = folder / (other + ".bundle");
    std::string info = readFile(FAULTY_BUNDLE + "/Contents/Info.plist");
    for (std::size_t at; (at = info.find(text)) != std::string::npos;) {
        info.replace(at, text.size(), other);
    }
    writeFile(bundle + "/Contents/Info.plist", info);
    std::filesystem::create_directory_symlink(FAULTY_BUNDLE + "/Contents/Linux", bundle + "/Contents/Linux");
    return bundle;
}

/// The findings that are not ok: of each the status, the subject and the text, as far as a path in it.
std::string failuresOf(const std::string& bundle, const char* fault) {
    std::string failures;
    setenv("PLUGIN_FAULT", fault, 1);
    checkBundle(bundle, [&](const Finding& finding) {
        if (!finding.ok) {
            failures += std::to_string(static_cast<int>(finding.status)) + " " + finding.subject + ": " +
                        finding.text.substr(0, finding.text.find('/')) + "; ";
        }
    });
    return failures;
}

TEST(Checks, FindWhatIsWrong) {
    const TempDir folder;
    const std::string uncounted = "4 interface: references are counted: 2, 1, 0; ";
    const std::string generous = "4 interface: an unknown interface is refused; " + uncounted;
    const std::string given = " is given; 4 interface: IUnknown is given; ";
    const std::string type = XCOD_PLUGIN_TYPE_ID, factory = "9E0B52C7-7F0D-4D0B-8C61-6B1E4B1F2A93";
    const std::string noInstance = "4 interface: the factory made no instance; ";
    const struct {
        const char* name;
        std::string bundle;
        const char* fault;
        std::string failures;
    } cases[] = {
        {"nothing", PLUGIN_BUNDLE, "", ""},
        {"references and interfaces", FAULTY_BUNDLE, "", generous},
        {"no instance", FAULTY_BUNDLE, "refused instance", noInstance},
        {"no interface", FAULTY_BUNDLE, "refused interface",
         std::string("4 interface: the installer interface ") + XCOD_INTERFACE_ID + given + uncounted},
        {"undefined symbol", UNLINKED_BUNDLE, "", "3 code: the code cannot be loaded: ; "},
        {"type", bundleWith(folder, type, factory), "", "4 registration: no factory for plug-in type " + type + "; "},
        {"dynamic registration", bundleWith(folder, "NO<", "YES<"), "", "3 bundle: this is not a plug-in: ; "},
        {"the type's identifier", bundleWith(folder, factory, type), "",
         "3 identifiers: the factory's identifier differs from the type's and the interface's; " + generous},
        {"factory function", bundleWith(folder, "MyFactory", "YourFactory"), "", noInstance},
        {"malformed", bundleWith(folder, "</dict>", "dict"), "", "3 bundle: this is not a plug-in: ; "},
    };
    for (const auto& c : cases) {
        // Each in a process of its own, like the worker: a factory is registered once, and code stays loaded.
        EXPECT_TRUE(holdsInACopy([&] {
            const std::string failures = failuresOf(c.bundle, c.fault);
            EXPECT_EQ(failures, c.failures);
            return failures == c.failures;
        })) << c.name;
    }
}

}  // namespace
