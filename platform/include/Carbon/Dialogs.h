#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef SInt16 DialogItemIndex;
typedef struct OpaqueDialogPtr* DialogRef;
typedef struct EventRecord EventRecord;
typedef Boolean (*ModalFilterUPP)(DialogRef dialog, EventRecord* event, DialogItemIndex* item);

/// Shows the alert of dialog resource `alertID`. There are no dialog resources here, so it shows nothing and returns
/// -1, as a Mac does when the resource is missing. Neither argument has an effect.
CF_EXPORT DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP filter);

CF_EXTERN_C_END
