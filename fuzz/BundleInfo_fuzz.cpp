// Bundles without code, whose Info.plist holds anything: what the host reads of them before their code runs.

#include "fuzz/Fuzz.h"
#include "installer-host/bundle/Checks.h"
#include "installer-host/look/BundleInfo.h"
#include "tests/support/TempDir.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const test::TempDir folder;  // another one each time, because a bundle whose factories are registered lives on
    test::writeFile(folder / "A.bundle/Contents/Info.plist", std::string(data, data + size));
    const std::string bundle = folder / "A.bundle";
    const host::BundleInfo info = host::readBundleInfo(bundle);
    bool isRefused = false;
    std::string identifier;
    host::checkBundle(bundle, [&](const host::Finding& finding) {
        fuzz::expect("nothing comes after what ends the check", !isRefused || finding.subject == "identifiers");
        isRefused = isRefused || (!finding.ok && finding.status != host::ExitStatus::Done);
        identifier = finding.subject == "bundle" && finding.ok ? finding.text : identifier;
    });
    fuzz::expect("a bundle without code passes", isRefused);
    fuzz::expectEqual("the identifier, read by the port", identifier.substr(0, 255),
                      info.identifier.size() < 256 ? info.identifier : "");
    return 0;
}
