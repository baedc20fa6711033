// Does what its arguments say with the preferences of one domain, for the tests that need a process of its own:
//
//     preferences_driver any|user|host DOMAIN COMMAND...
//
//     set KEY TEXT     collect a string
//     sync             store, and print 1 or 0
//     run COMMAND      let the shell run a command

#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/CFSupport.h"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto domain = test::string(arguments.at(1));
    const CFStringRef user = arguments[0] == "any" ? kCFPreferencesAnyUser : kCFPreferencesCurrentUser;
    const CFStringRef host = arguments[0] == "user" ? kCFPreferencesAnyHost : kCFPreferencesCurrentHost;
    for (std::size_t i = 2; i < arguments.size(); ++i) {
        if (arguments[i] == "set") {
            CFPreferencesSetValue(test::string(arguments.at(i + 1)).get(), test::string(arguments.at(i + 2)).get(),
                                  domain.get(), user, host);
            i += 2;
        } else if (arguments[i] == "sync") {
            std::puts(CFPreferencesSynchronize(domain.get(), user, host) ? "1" : "0");
        } else if (arguments[i] != "run" || std::system(arguments.at(++i).c_str()) != 0) {
            return 2;
        }
    }
    return 0;
}
