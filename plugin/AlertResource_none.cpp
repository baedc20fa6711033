#include "plugin/AlertResource.h"

void showAlertResource(SInt16) {}
