#pragma once

#import <Foundation/Foundation.h>

#include <string>

/// The string class of the port: exactly the UTF-16 units it was made from. Foundation's own classes drop a leading
/// U+FEFF, refuse unpaired surrogates, and call canonically equivalent texts equal; a CoreFoundation string does none
/// of that.
@interface CvUnitString : NSString {
    unichar* units_;
    NSUInteger length_;
    BOOL immortal_;
}

/// A new string with a copy of `length` units. An immortal one ignores retain and release.
+ (CvUnitString*)newWithUnits:(const char16_t*)units length:(NSUInteger)length immortal:(BOOL)immortal;

@end

namespace cv {

/// A copy of the units of `string`.
std::u16string unitsOf(NSString* string);

/// Whether the two strings have the same units, whatever their classes.
bool sameUnits(NSString* a, NSString* b);

}  // namespace cv
