#pragma once

#include <Carbon/Carbon.h>

/// Shows the alert of dialog resource `alertID`. Shows nothing where the resource is missing, or on a 64-bit Mac, whose
/// Carbon has no alerts from resources.
void showAlertResource(SInt16 alertID);
