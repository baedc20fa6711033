#include "installer-host/bundle/Checks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace host;
using namespace test;

/// A bundle with the faulty plug-in's code and its Info.plist, in which `text` is another one.
std::string bundleWith(const TempDir& folder, const std::string& text, const std::string& other) {
    const std::string bundle = folder / (other + ".bundle");
    std::string info = readFile(FAULTY_BUNDLE + "/Contents/Info.plist");
    for (std::size_t at; (at = info.find(text)) != std::string::npos;) {
        info.replace(at, text.size(), other);
    }
    writeFile(bundle + "/Contents/Info.plist", info);
    std::filesystem::create_directory_symlink(FAULTY_BUNDLE + "/Contents/Linux", bundle + "/Contents/Linux");
    return bundle;
}

/// The findings that are not ok, "STATUS SUBJECT: TEXT; " each; of the text, what comes before an apostrophe.
std::string failuresOf(const std::string& bundle, const char* fault) {
    std::string failures;
    setenv("PLUGIN_FAULT", fault, 1);
    checkBundle(bundle, [&](const Finding& finding) {
        EXPECT_EQ(finding.ok, finding.status == ExitStatus::Done);
        if (!finding.ok) {
            const std::string text = finding.text.substr(0, finding.text.find('\''));
            failures += std::to_string(static_cast<int>(finding.status)) + " " + finding.subject + ": " + text + "; ";
        }
    });
    return failures;
}

TEST(Checks, FindWhatIsWrong) {
    const TempDir folder;
    const std::string uncounted =
        "4 interface: an unknown interface is refused; 4 interface: references are counted: 2, 1, 0; ";
    const std::string type = "5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8", factory = "9E0B52C7-7F0D-4D0B-8C61-6B1E4B1F2A93";
    const struct {
        const char* name;
        std::string bundle;
        const char* fault;
        std::string failures;
    } cases[] = {
        {"nothing", PLUGIN_BUNDLE, "", ""},
        {"counts", FAULTY_BUNDLE, "", uncounted},
        {"no instance", FAULTY_BUNDLE, "refused instance", "4 interface: the factory made no instance; "},
        {"no interface", FAULTY_BUNDLE, "refused interface",
         "4 interface: the installer interface 00D5FBFE-3D3D-40E2-9DCB-92ED695834F8 is given; "
         "4 interface: IUnknown is given; 4 interface: references are counted: 2, 1, 0; "},
        {"undefined symbol", UNLINKED_BUNDLE, "", "3 code: the code of ; "},
        {"another type", bundleWith(folder, "5CD9484B", "5CD9484C"), "",
         "4 registration: no factory for plug-in type " + type + "; "},
        {"dynamic registration", bundleWith(folder, "NO<", "YES<"), "", "3 bundle: ; "},
        {"the type's identifier", bundleWith(folder, factory, type), "", "3 identifiers: the factory; " + uncounted},
        {"no such factory", bundleWith(folder, "MyFactory", "YourFactory"), "",
         "4 interface: the factory made no instance; "},
        {"no code", bundleWith(folder, "FaultyPlugIn", "Missing"), "", "3 code: the code of ; "},
        {"malformed", bundleWith(folder, "</dict>", "dict"), "", "3 bundle: ; "},
        {"missing", folder / "No.bundle", "", "3 bundle: ; "},
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
