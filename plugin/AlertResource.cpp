#include "plugin/AlertResource.h"

void showAlertResource(SInt16 alertID) {
    StopAlert(alertID, nullptr);
}
