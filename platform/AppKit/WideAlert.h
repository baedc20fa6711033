#pragma once

#import <AppKit/AppKit.h>

namespace cv {

/// Runs an alert with as many buttons as it has, and returns the tag of the one that was pressed: 1000 for the first,
/// 1001 for the second, and so on. GNUstep's own panel has room for three and drops the others.
NSInteger runWideAlert(NSAlert* alert);

}  // namespace cv
