#import "platform/CoreFoundation/UnitString.h"

#include <cstring>

@implementation CvUnitString

+ (CvUnitString*)newWithUnits:(const char16_t*)units length:(NSUInteger)length immortal:(BOOL)immortal {
    CvUnitString* string = NSAllocateObject(self, length * sizeof(unichar), NSDefaultMallocZone());
    string->units_ = reinterpret_cast<unichar*>(reinterpret_cast<char*>(string) + class_getInstanceSize(self));
    string->length_ = length;
    string->immortal_ = immortal;
    if (length != 0) {
        std::memcpy(string->units_, units, length * sizeof(unichar));
    }
    return string;
}

- (NSUInteger)length {
    return length_;
}

- (unichar)characterAtIndex:(NSUInteger)index {
    if (index >= length_) {
        [NSException raise:NSRangeException
                    format:@"index %lu is beyond the string", static_cast<unsigned long>(index)];
    }
    return units_[index];
}

- (void)getCharacters:(unichar*)buffer range:(NSRange)range {
    if (range.location > length_ || range.length > length_ - range.location) {
        [NSException raise:NSRangeException format:@"the range is beyond the string"];
    }
    if (range.length != 0) {
        std::memcpy(buffer, units_ + range.location, range.length * sizeof(unichar));
    }
}

- (void)getCharacters:(unichar*)buffer {
    [self getCharacters:buffer range:NSMakeRange(0, length_)];
}

- (BOOL)isEqual:(id)other {
    return other == self || ([other isKindOfClass:[NSString class]] && cv::sameUnits(self, other));
}

- (BOOL)isEqualToString:(NSString*)other {
    return [self isEqual:other];
}

// Foundation's own hash, so that a dictionary finds a key whichever class of string it was stored with.
- (NSUInteger)hash {
    return [super hash];
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

- (id)retain {
    return immortal_ ? self : [super retain];
}

- (oneway void)release {
    if (!immortal_) {
        [super release];
    }
}

- (id)autorelease {
    return immortal_ ? self : [super autorelease];
}

- (NSUInteger)retainCount {
    return immortal_ ? NSIntegerMax : [super retainCount];
}

@end

namespace cv {

std::u16string unitsOf(NSString* string) {
    std::u16string units([string length], u'\0');
    [string getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
    return units;
}

bool sameUnits(NSString* a, NSString* b) {
    return [a length] == [b length] && unitsOf(a) == unitsOf(b);
}

}  // namespace cv
