#import "platform/AppKit/WideAlert.h"

#include <algorithm>
#include <vector>

#include "platform/CoreFoundation/Bridge.h"

// AppKit is not linked, so its classes are looked up by name.

/// Ends the modal panel with the tag of the button that was pressed.
@interface CVAlertButtonTarget : NSObject
- (void)press:(NSButton*)sender;
@end

@implementation CVAlertButtonTarget
- (void)press:(NSButton*)sender {
    [[objc_lookUpClass("NSApplication") sharedApplication] stopModalWithCode:[sender tag]];
}
@end

namespace {

constexpr CGFloat MARGIN = 16;
constexpr CGFloat GAP = 10;
constexpr CGFloat LEAST_BUTTON_WIDTH = 72;
constexpr CGFloat BUTTON_HEIGHT = 24;
constexpr CGFloat LEAST_TEXT_WIDTH = 300;

NSTextField* makeLabel(NSString* text, CGFloat width) {
    NSTextField* const label = [[objc_lookUpClass("NSTextField") alloc] initWithFrame:NSMakeRect(0, 0, width, 1)];
    [label setStringValue:text];
    [label setEditable:NO];
    [label setSelectable:NO];
    [label setBezeled:NO];
    [label setDrawsBackground:NO];
    [label setFont:[objc_lookUpClass("NSFont") systemFontOfSize:14]];
    [[label cell] setWraps:YES];
    const NSSize size = [[label cell] cellSizeForBounds:NSMakeRect(0, 0, width, 10000)];
    [label setFrameSize:NSMakeSize(width, size.height)];
    return [label autorelease];
}

NSString* titleFor(NSAlertStyle style) {
    return style == NSInformationalAlertStyle ? @"Information" : style == NSCriticalAlertStyle ? @"Critical" : @"Alert";
}

/// Sizes the buttons and places them from the right, the first one outermost; returns the width that they take.
CGFloat layOutButtons(const std::vector<id>& buttons, CGFloat right) {
    CGFloat left = right;
    for (NSButton* const button : buttons) {
        [button sizeToFit];
        const CGFloat width = std::max([button frame].size.width + GAP, LEAST_BUTTON_WIDTH);
        left -= width;
        [button setFrame:NSMakeRect(left, MARGIN / 2, width, BUTTON_HEIGHT)];
        left -= GAP;
    }
    return right - left - GAP;
}

NSPanel* makePanel(NSAlert* alert, id target) {
    const std::vector<id> buttons = cv::each([[alert buttons] objectEnumerator]);
    const CGFloat width = std::max(layOutButtons(buttons, 0), LEAST_TEXT_WIDTH);
    layOutButtons(buttons, MARGIN + width);
    NSTextField* const label = makeLabel([alert messageText], width);
    const CGFloat top = MARGIN / 2 + BUTTON_HEIGHT + MARGIN;
    [label setFrameOrigin:NSMakePoint(MARGIN, top)];

    const NSRect content = NSMakeRect(0, 0, width + 2 * MARGIN, top + [label frame].size.height + MARGIN);
    NSPanel* const panel = [[objc_lookUpClass("NSPanel") alloc] initWithContentRect:content
                                                                          styleMask:NSTitledWindowMask
                                                                            backing:NSBackingStoreBuffered
                                                                              defer:NO];
    [panel setTitle:titleFor([alert alertStyle])];
    [[panel contentView] addSubview:label];
    for (NSButton* const button : buttons) {
        [button setTarget:target];
        [button setAction:@selector(press:)];
        [[panel contentView] addSubview:button];
    }
    [panel center];
    return [panel autorelease];
}

}  // namespace

namespace cv {

NSInteger runWideAlert(NSAlert* alert) {
    const AutoreleasePool pool;
    CVAlertButtonTarget* const target = [[CVAlertButtonTarget new] autorelease];
    NSPanel* const panel = makePanel(alert, target);
    const NSInteger pressed = [[objc_lookUpClass("NSApplication") sharedApplication] runModalForWindow:panel];
    [panel orderOut:nil];
    return pressed;
}

}  // namespace cv
