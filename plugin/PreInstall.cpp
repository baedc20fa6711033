#include <CoreFoundation/CoreFoundation.h>

#include "CvBase/Util/CFString.h"
#include "CvBase/common/common_string.h"
#include "plugin/Catalogue.h"
#include "plugin/StepSupport.h"
#include "plugin/Steps.h"

void PreInstall(XCodParamBlock* block) {
    if (block == nullptr || !acceptBlockVersion(*block)) {
        return;
    }
    const Product* const product = findProduct(block->productCode);
    if (product == nullptr) {
        return;
    }
    {
        const String key = String("InstalledProducts/%1/CurrentVersion").Arg(String(product->name));
        const Util::CFString platformKey(key, Util::CFString::ReleaseOnDestroy);
        setMachinePreference(platformKey.Get(), CFSTR("1.00"), updaterDomain());
    }
    synchronizeMachinePreferences(updaterDomain());
}
