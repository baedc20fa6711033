#pragma once

#import <Foundation/Foundation.h>

/// What stands for an NSAlert where there is no display: it writes the message and the buttons to standard error, and
/// reads the choice from the terminal, or takes the first button when standard input is no terminal. It answers the
/// part of NSAlert's interface that the message boxes use.
@interface CVConsoleAlert : NSObject {
    NSString* message_;
    NSMutableArray* buttons_;
    NSUInteger style_;
}

- (void)setMessageText:(NSString*)text;
- (NSString*)messageText;

/// NSAlertStyle: 0 warning (the default), 1 informational, 2 critical.
- (void)setAlertStyle:(NSUInteger)style;
- (NSUInteger)alertStyle;

/// Adds a button behind those there are; the first one is the default. Returns its title: there is no button object.
- (id)addButtonWithTitle:(NSString*)title;

/// Asks, and returns 1000 for the first button, 1001 for the second, and so on. Without a button there is an "OK".
- (NSInteger)runModal;

@end
