// Bundles without code, whose Info.plist holds anything: what the host reads of them before their code runs.

#include <optional>

#include "fuzz/Fuzz.h"
#include "fuzz/TextModel.h"
#include "installer-host/bundle/Checks.h"
#include "installer-host/look/BundleInfo.h"
#include "tests/support/TempDir.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const test::TempDir folder;  // another one each time, because a bundle whose factories are registered lives on
    const std::string bundle = folder / "A.bundle";
    test::writeFile(bundle + "/Contents/Info.plist", std::string(data, data + size));
    const std::string identifier = host::readBundleInfo(bundle).identifier;
    bool isRefused = false;
    std::optional<std::string> checked;
    host::checkBundle(bundle, [&](const host::Finding& finding) {
        isRefused = isRefused || !finding.ok;
        checked = finding.subject == "bundle" && finding.ok ? finding.text : checked;
    });
    fuzz::expect("a bundle without code passes", isRefused);
    if (checked && identifier.size() < 256) {
        fuzz::expectEqual("the identifier, read by the port", *checked, fuzz::untilNul(identifier));
    }
    return 0;
}
