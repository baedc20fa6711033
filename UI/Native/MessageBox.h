#pragma once

#include <cstdint>
#include <vector>

#include "CvBase/common/common_string.h"

#pragma GCC visibility push(default)

/// \file
/// Modal message boxes with fixed sets of buttons, shown with the platform's own alert panel (AppKit's NSAlert).
///
/// Each call shows its own panel and blocks until the user presses a button. Call them on the main thread, inside an
/// autorelease pool of your own (cv::AutoreleasePool). Without a display the port asks on the terminal instead; without
/// a terminal either it takes the first button.
///
/// In all of them, `parent` is ignored: the panel is application-modal. `title` is ignored: such a panel has none. The
/// focus and the unnamed bool are ignored: the first button is always the default one. A message that is not valid
/// UTF-8 shows as empty. When Util::IsModalDialogAllowed() is false, nothing is shown, and those that return a bool
/// return false.

namespace UI {
namespace Native {

/// Chooses the panel's style. Any other value leaves the panel its own.
enum IconType : std::int32_t {
    IconInformation = 0,
    IconError = 1,
    IconWarning = 2,
    IconQuestion = 3,  ///< shown as information
    IconNone = 4       ///< shown as information
};

/// The button that the caller would like to be the default one. Ignored: the first one always is.
enum OKCancelFocus : std::int32_t { OKCancelFocusOK = 0, OKCancelFocusCancel = 1 };
enum YesNoFocus : std::int32_t { YesNoFocusYes = 0, YesNoFocusNo = 1 };
enum YesNoCancelFocus : std::int32_t { YesNoCancelFocusYes = 0, YesNoCancelFocusNo = 1, YesNoCancelFocusCancel = 2 };
enum RetryCancelFocus : std::int32_t { RetryCancelFocusRetry = 0, RetryCancelFocusCancel = 1 };

/// "OK". True when it was pressed.
bool MessageOK(void* parent, const String& title, const String& message, bool, IconType icon);

/// "OK", "Cancel". True for "OK".
bool MessageOKCancel(void* parent, const String& title, const String& message, OKCancelFocus focus, bool,
                     IconType icon);

/// "Yes", "No". True for "Yes".
bool MessageYesNo(void* parent, const String& title, const String& message, YesNoFocus focus, bool, IconType icon);

/// "Yes", "Cancel", "No". True for "Yes". Sets `cancelled` to whether "Cancel" was pressed, and leaves it as it was
/// when nothing is shown.
bool MessageYesNoCancel(bool& cancelled, void* parent, const String& title, const String& message,
                        YesNoCancelFocus focus, bool, IconType icon);

/// "OK", "Cancel", "Retry", "Cancel". True only for "OK": "Retry" gives false, as "Cancel" does.
bool MessageRetryCancel(void* parent, const String& title, const String& message, RetryCancelFocus focus, bool,
                        IconType icon);

/// "OK", with a message in UTF-16 (the whole vector, no terminating zero) and the panel's own style, whatever the icon.
/// Nothing is shown when `message` or `third` is empty; `first` and the text of `third` are not used.
void MessageOK(void* parent, const std::vector<unsigned short>& first, const std::vector<unsigned short>& message,
               const std::vector<unsigned short>& third, bool, IconType icon);

}  // namespace Native
}  // namespace UI

#pragma GCC visibility pop
