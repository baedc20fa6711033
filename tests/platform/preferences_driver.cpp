// Does what its arguments say with the preferences of one domain, for the tests that need a process of its own:
//
//     preferences_driver any|user|host DOMAIN COMMAND...
//
//     set KEY TEXT     collect a string            sync     store, and print 1 or 0
//     get KEY          print a string, or (none)   run CMD  let the shell run a command
//     stop             stop until a tracer lets it go on
//     count TO         for each number from 1 to TO: set "Counter" and a long "Text", store

#include <CoreFoundation/CoreFoundation.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/CFSupport.h"

namespace {

using test::string;

struct Domain {
    test::Owned<CFStringRef> name;
    CFStringRef user;
    CFStringRef host;

    void set(const std::string& key, CFPropertyListRef value) const {
        CFPreferencesSetValue(string(key).get(), value, name.get(), user, host);
    }
    bool synchronize() const { return CFPreferencesSynchronize(name.get(), user, host); }

    void print(const std::string& key) const {
        const test::Owned value(
            static_cast<CFStringRef>(CFPreferencesCopyValue(string(key).get(), name.get(), user, host)));
        std::puts(value ? test::text(value.get()).c_str() : "(none)");
    }

    void count(int last) const {
        for (int i = 1; i <= last; ++i) {
            const test::Owned number(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &i));
            set("Counter", number.get());
            set("Text", string(std::string(50000, static_cast<char>('a' + i % 26))).get());
            synchronize();
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    const std::string scope = argc > 2 ? argv[1] : "";
    const Domain domain{string(argc > 2 ? argv[2] : ""),
                        scope == "any" ? kCFPreferencesAnyUser : kCFPreferencesCurrentUser,
                        scope == "user" ? kCFPreferencesAnyHost : kCFPreferencesCurrentHost};
    for (int i = 3; i < argc; ++i) {
        const std::string command = argv[i];
        if (command == "set" && i + 2 < argc) {
            domain.set(argv[i + 1], string(argv[i + 2]).get());
            i += 2;
        } else if (command == "sync") {
            std::puts(domain.synchronize() ? "1" : "0");
        } else if (command == "stop") {
            std::raise(SIGSTOP);
        } else if (command == "get" && i + 1 < argc) {
            domain.print(argv[++i]);
        } else if (command == "count" && i + 1 < argc) {
            domain.count(std::atoi(argv[++i]));
        } else if (command == "run" && i + 1 < argc && std::system(argv[i + 1]) == 0) {
            ++i;
        } else {
            std::fprintf(stderr, "preferences_driver: %s failed\n", command.c_str());
            return 2;
        }
    }
    return 0;
}
