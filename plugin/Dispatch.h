#pragma once

#include "plugin/ParamBlock.h"

/// The interface's entry: runs the step that `block`'s selector names, and none for another selector. A block of
/// another version than XCOD_BLOCK_VERSION gets the failure bit, without an alert, and no step is run. `block` must not
/// be null. Catches nothing.
void XCodMain(XCodParamBlock* block);
