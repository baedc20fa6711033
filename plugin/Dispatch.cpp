#include "plugin/Dispatch.h"

#include "plugin/Steps.h"

void XCodMain(XCodParamBlock* block) {
    if (block->version != XCOD_BLOCK_VERSION) {
        block->resultFlags |= XCOD_RESULT_FAILED;
        return;
    }
    // Two tests, not a choice: whoever changes the selector during the first step gets the second one too.
    if (block->selector == XCodSelectorPreInstall) {
        PreInstall(block);
    }
    if (block->selector == XCodSelectorPostInstall) {
        PostInstall(block);
    }
}
