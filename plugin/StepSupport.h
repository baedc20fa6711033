#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "plugin/ParamBlock.h"

// What both steps do alike.

/// Whether the block has the version that the steps accept. If not, the user is told in an alert and the block gets the
/// failure bit.
bool acceptBlockVersion(XCodParamBlock& block);

/// Collects `key` = `value` for all users of this machine, in `domain`.
void setMachinePreference(CFStringRef key, CFPropertyListRef value, CFStringRef domain);

/// Stores what was collected for `domain`. Whether that worked is not checked: the steps report no storing failure.
void synchronizeMachinePreferences(CFStringRef domain);
