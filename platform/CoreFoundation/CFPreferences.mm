#include <CoreFoundation/CFPreferences.h>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <tuple>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/PreferenceFile.h"
#include "platform/CoreFoundation/PropertyListBridge.h"
#include "platform/Descriptor.h"
#include "platform/Report.h"
#include "platform/StoreFailures.h"

const CFStringRef kCFPreferencesAnyUser = reinterpret_cast<CFStringRef>(@"kCFPreferencesAnyUser");
const CFStringRef kCFPreferencesCurrentUser = reinterpret_cast<CFStringRef>(@"kCFPreferencesCurrentUser");
const CFStringRef kCFPreferencesAnyHost = reinterpret_cast<CFStringRef>(@"kCFPreferencesAnyHost");
const CFStringRef kCFPreferencesCurrentHost = reinterpret_cast<CFStringRef>(@"kCFPreferencesCurrentHost");

namespace {

/// What one set of collected changes belongs to.
struct Target {
    std::string domain;
    bool isAnyUser;
    bool isAnyHost;

    bool operator<(const Target& other) const {
        return std::tie(domain, isAnyUser, isAnyHost) < std::tie(other.domain, other.isAnyUser, other.isAnyHost);
    }
};

/// The changes that are not stored yet. They live to the end of the process, for callers in other destructors.
struct Collected {
    std::mutex mutex;
    std::map<Target, cv::PreferenceChanges> changes;
};

Collected& collected() {
    static auto* const all = new Collected;
    return *all;
}

/// Checks what a caller asks for; reports under the name `who` what is wrong with it.
std::optional<Target> targetOf(const char* who, CFStringRef domain, CFStringRef user, CFStringRef host) {
    const auto name = cv::utf8Of(domain);
    const bool isAnyUser = CFEqual(user, kCFPreferencesAnyUser);
    const bool isAnyHost = CFEqual(host, kCFPreferencesAnyHost);
    if (!name || name->empty() || name->find('/') != std::string::npos) {
        cv::report(who, "\"" + name.value_or("") + "\" cannot name a domain");
    } else if (!isAnyUser && !CFEqual(user, kCFPreferencesCurrentUser)) {
        cv::report(who, *name + ": the user must be any or the current one");
    } else if (!isAnyHost && !CFEqual(host, kCFPreferencesCurrentHost)) {
        cv::report(who, *name + ": the host must be any or the current one");
    } else if (isAnyUser && isAnyHost) {
        cv::report(who, *name + ": there are no preferences for any user on any host");
    } else {
        return Target{*name, isAnyUser, isAnyHost};
    }
    return std::nullopt;
}

/// The current user's home folder, or an empty text.
std::string homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') {
        return home;
    }
    std::array<char, 16384> buffer;
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr && *found->pw_dir == '/' ? found->pw_dir : "";
}

/// The machine's identifier in the form of a UUID, or an empty text.
std::string hostIdentifier() {
    constexpr std::size_t DIGITS = 32;
    const cv::Descriptor file(open("/etc/machine-id", O_RDONLY | O_CLOEXEC));
    std::string text;
    if (!file.isOpen() || cv::readAll(file.get(), DIGITS, text) != 0 || text.size() < DIGITS ||
        text.find_first_not_of("0123456789abcdef") < DIGITS) {
        return {};
    }
    text.resize(DIGITS);
    for (char& digit : text) {
        digit = static_cast<char>(std::toupper(digit));
    }
    for (const std::size_t position : {20, 16, 12, 8}) {
        text.insert(position, 1, '-');
    }
    return text;
}

/// Where the target's file is; nothing, with `reason` set, when this machine does not say.
std::optional<cv::PreferenceLocation> locationOf(const Target& target, std::string& reason) {
    if (target.isAnyUser) {
        return cv::PreferenceLocation{"/Library/Preferences", target.domain + ".plist"};
    }
    const std::string home = homeFolder();
    if (home.empty()) {
        reason = "the current user has no home folder";
        return std::nullopt;
    }
    const std::string folder = (home == "/" ? "" : home) + "/Library/Preferences";
    if (target.isAnyHost) {
        return cv::PreferenceLocation{folder, target.domain + ".plist"};
    }
    const std::string host = hostIdentifier();
    if (host.empty()) {
        reason = "this machine has no identifier in /etc/machine-id";
        return std::nullopt;
    }
    return cv::PreferenceLocation{folder + "/ByHost", target.domain + "." + host + ".plist"};
}

/// Stores the changes; false, with a line on standard error, when that fails.
bool store(const Target& target, const cv::PreferenceChanges& changes) {
    std::string reason;
    const auto location = locationOf(target, reason);
    const std::string what = location ? location->path() : target.domain;
    const std::optional<cv::PreferenceFault> fault =
        location ? cv::writePreferences(*location, changes) : cv::PreferenceFault{what, reason};
    if (!fault) {
        cv::storeSucceeded(what.c_str());
        return true;
    }
    const std::string line = fault->path + ": " + fault->reason;
    cv::report("CFPreferencesSynchronize", line);
    cv::storeFailed(what.c_str(), fault->path == what ? fault->reason.c_str() : line.c_str());
    return false;
}

CFPropertyListRef copyValue(const Target& target, const std::string& key) {
    const std::lock_guard<std::mutex> lock(collected().mutex);
    const auto changes = collected().changes.find(target);
    if (changes != collected().changes.end()) {
        const auto change = changes->second.find(key);
        if (change != changes->second.end()) {
            return change->second != nullptr ? cv::plist::createReference(change->second.get()) : nullptr;
        }
    }
    std::string reason;
    const auto location = locationOf(target, reason);
    const cv::plist::Tree root = location ? cv::readPreferences(*location) : nullptr;
    const plist_t node = root != nullptr ? plist_dict_get_item(root.get(), key.c_str()) : nullptr;
    return node != nullptr ? cv::plist::createReference(node) : nullptr;
}

}  // namespace

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host) {
    constexpr const char* WHO = "CFPreferencesSetValue";
    const auto target = targetOf(WHO, domain, user, host);
    const auto name = cv::utf8Of(key);
    if (!target || !name) {
        if (target) {
            cv::report(WHO, target->domain + ": a key must be text without a NUL or half a surrogate pair");
        }
        return;
    }
    std::string reason = "an exception was raised";
    cv::plist::Tree tree;
    if (value != nullptr) {
        tree = cv::guarded(cv::plist::Tree(), [&] { return cv::plist::fromReference(value, reason); });
        if (tree == nullptr) {
            cv::report(WHO, target->domain + ": the value of \"" + *name + "\" is refused: " + reason);
            return;
        }
    }
    const std::lock_guard<std::mutex> lock(collected().mutex);
    collected().changes[*target][*name] = std::move(tree);
}

CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef domain, CFStringRef user, CFStringRef host) {
    const auto target = targetOf("CFPreferencesCopyValue", domain, user, host);
    const auto name = cv::utf8Of(key);
    if (!target || !name) {
        return nullptr;
    }
    return cv::guarded<CFPropertyListRef>(nullptr, [&] { return copyValue(*target, *name); });
}

Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    const auto target = targetOf("CFPreferencesSynchronize", domain, user, host);
    if (!target) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(collected().mutex);
    const auto changes = collected().changes.find(*target);
    if (changes == collected().changes.end()) {
        return true;
    }
    if (!store(*target, changes->second)) {
        return false;
    }
    collected().changes.erase(changes);
    return true;
}
