#include <Carbon/Dialogs.h>

DialogItemIndex StopAlert(SInt16, ModalFilterUPP) {
    return -1;
}
