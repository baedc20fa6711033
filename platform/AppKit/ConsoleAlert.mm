#import "platform/AppKit/ConsoleAlert.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/// NSAlertFirstButtonReturn; the other buttons follow it.
constexpr NSInteger FIRST_BUTTON_RETURN = 1000;

/// What stands in front of each line, so that an alert is told from a program's own messages.
constexpr char PREFIX[] = "[alert] ";

const char* styleName(NSUInteger style) {
    switch (style) {
        case NSUInteger{1}:
            return "Note";
        case NSUInteger{2}:
            return "Error";
        default:
            return "Warning";
    }
}

std::string text(NSString* string) {
    const char* const bytes = [string UTF8String];
    return bytes == nullptr ? std::string() : std::string(bytes);
}

/// `lines` to standard error, with the prefix on each line, in one piece.
void print(const std::string& lines) {
    std::string out;
    for (std::size_t start = 0; start <= lines.size();) {
        const std::size_t end = std::min(lines.find('\n', start), lines.size());
        out += PREFIX + lines.substr(start, end - start) + '\n';
        start = end + 1;
    }
    std::fputs(out.c_str(), stderr);
}

/// One line of standard input, without its end; false at the end of input.
bool readLine(std::string& line) {
    line.clear();
    for (int c = std::getchar(); c != EOF; c = std::getchar()) {
        if (c == '\n') {
            return true;
        }
        line += static_cast<char>(c);
    }
    return !line.empty();
}

/// Asks the user at the terminal for a number from 1 to `count` until there is one; 1 for an empty line and at the end
/// of input.
NSUInteger ask(NSUInteger count) {
    for (std::string line;;) {
        std::fprintf(stderr, "%sNumber of your choice [1]: ", PREFIX);
        if (!readLine(line) || line.empty()) {
            return 1;
        }
        char* end = nullptr;
        const unsigned long choice = std::strtoul(line.c_str(), &end, 10);
        if (*end == '\0' && choice >= 1 && choice <= count) {
            return choice;
        }
        print("'" + line + "' is none of the numbers 1 to " + std::to_string(count) + ".");
    }
}

}  // namespace

@implementation CVConsoleAlert

- (id)init {
    self = [super init];
    if (self != nil) {
        message_ = @"";
        buttons_ = [NSMutableArray new];
    }
    return self;
}

- (void)dealloc {
    [message_ release];
    [buttons_ release];
    [super dealloc];
}

- (void)setMessageText:(NSString*)messageText {
    [message_ autorelease];
    message_ = [messageText copy];
}

- (NSString*)messageText {
    return message_;
}

- (void)setAlertStyle:(NSUInteger)style {
    style_ = style;
}

- (NSUInteger)alertStyle {
    return style_;
}

- (id)addButtonWithTitle:(NSString*)title {
    [buttons_ addObject:title];
    return title;
}

- (NSInteger)runModal {
    if ([buttons_ count] == 0) {
        [buttons_ addObject:@"OK"];
    }
    const NSUInteger count = [buttons_ count];
    std::string choices;
    for (NSUInteger i = 0; i < count; ++i) {
        choices += (i == 0 ? "" : "   ") + std::to_string(i + 1) + " " + text([buttons_ objectAtIndex:i]);
    }
    print(std::string(styleName(style_)) + ": " + text(message_) + "\n" + choices);
    if (isatty(STDIN_FILENO) == 1) {
        return FIRST_BUTTON_RETURN + static_cast<NSInteger>(ask(count)) - 1;
    }
    print("There is no display and no terminal to ask; taking 1 " + text([buttons_ objectAtIndex:0]) + ".");
    return FIRST_BUTTON_RETURN;
}

@end
