#include <CoreFoundation/CFPreferences.h>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cstdlib>
#include <mutex>
#include <new>
#include <optional>
#include <tuple>

#include "platform/CoreFoundation/PropertyListBridge.h"
#include "platform/CoreFoundation/String.h"
#include "platform/Descriptor.h"
#include "platform/Preferences/PreferenceFile.h"
#include "platform/Report.h"
#include "platform/StoreFailures.h"

namespace {

const __CFString ANY_USER(u"kCFPreferencesAnyUser");
const __CFString CURRENT_USER(u"kCFPreferencesCurrentUser");
const __CFString ANY_HOST(u"kCFPreferencesAnyHost");
const __CFString CURRENT_HOST(u"kCFPreferencesCurrentHost");

}  // namespace

const CFStringRef kCFPreferencesAnyUser = &ANY_USER;
const CFStringRef kCFPreferencesCurrentUser = &CURRENT_USER;
const CFStringRef kCFPreferencesAnyHost = &ANY_HOST;
const CFStringRef kCFPreferencesCurrentHost = &CURRENT_HOST;

namespace {

constexpr const char* SET_VALUE = "CFPreferencesSetValue";
constexpr const char* SYNCHRONIZE = "CFPreferencesSynchronize";
constexpr const char* NO_MEMORY = "there was not enough memory to store it";

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
    const auto isName = [](const std::string& text) {
        return !text.empty() && text.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
    };
    const bool isAnyUser = CFEqual(user, kCFPreferencesAnyUser);
    const bool isAnyHost = CFEqual(host, kCFPreferencesAnyHost);
    if (!name || !isName(*name)) {
        cv::report(who, "\"" + name.value_or("") + "\" cannot name a domain");
    } else if (!isAnyUser && !CFEqual(user, kCFPreferencesCurrentUser)) {
        cv::report(who, *name + ": the user must be any or the current one");
    } else if (!isAnyHost && !CFEqual(host, kCFPreferencesCurrentHost)) {
        cv::report(who, *name + ": the host must be any or the current one");
    } else if (isAnyUser && isAnyHost) {
        cv::report(who, *name + ": preferences for any user on any host are not supported");
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
    for (const std::size_t position : {20U, 16U, 12U, 8U}) {
        text.insert(position, 1, '-');
    }
    return text;
}

/// Where the target's file is; a fault when this machine does not say.
cv::Result<cv::PreferenceLocation> locationOf(const Target& target) {
    if (target.isAnyUser) {
        return cv::PreferenceLocation{"/Library/Preferences", target.domain + ".plist"};
    }
    const std::string home = homeFolder();
    if (home.empty()) {
        return cv::Fault{target.domain, "the current user has no home folder"};
    }
    const std::string folder = (home == "/" ? "" : home) + "/Library/Preferences";
    if (target.isAnyHost) {
        return cv::PreferenceLocation{folder, target.domain + ".plist"};
    }
    const std::string host = hostIdentifier();
    if (host.empty()) {
        return cv::Fault{target.domain, "this machine has no identifier in /etc/machine-id"};
    }
    return cv::PreferenceLocation{folder + "/ByHost", target.domain + "." + host + ".plist"};
}

/// Stores the changes; false, with a line on standard error, when that fails.
bool store(const Target& target, const cv::PreferenceChanges& changes) {
    const auto location = locationOf(target);
    const std::string what = location ? (*location).path() : target.domain;
    const std::optional<cv::Fault> fault = location ? cv::writePreferences(*location, changes) : location.fault();
    if (!fault) {
        cv::storeSucceeded(what.c_str());
        cv::storeSucceeded(target.domain.c_str());
        return true;
    }
    const std::string line = fault->text();
    cv::report(SYNCHRONIZE, line);
    cv::storeFailed(what.c_str(), fault->what == what ? fault->reason.c_str() : line.c_str());
    return false;
}

/// The same when memory may run out on the way, which is a failure like any other.
bool storeOrReport(const Target& target, const cv::PreferenceChanges& changes) {
    try {
        return store(target, changes);
    } catch (const std::bad_alloc&) {
        cv::report(SYNCHRONIZE, {target.domain, ": ", NO_MEMORY});
        cv::storeFailed(target.domain.c_str(), NO_MEMORY);
        return false;
    }
}

/// The value that is collected for the key, if one is; it is none when the key is to be removed.
const std::optional<cv::plist::Value>* collectedValue(const Target& target, const std::string& key) {
    const auto changes = collected().changes.find(target);
    if (changes == collected().changes.end()) {
        return nullptr;
    }
    const auto change = changes->second.find(key);
    return change != changes->second.end() ? &change->second : nullptr;
}

CFPropertyListRef copyValue(const Target& target, const std::string& key) {
    const std::lock_guard<std::mutex> lock(collected().mutex);
    if (const auto* const change = collectedValue(target, key)) {
        return *change ? cv::plist::createObject(**change) : nullptr;
    }
    const auto location = locationOf(target);
    const auto file = location ? cv::readPreferences(*location) : std::nullopt;
    if (!file) {
        return nullptr;
    }
    const auto found = file->find(key);
    return found != file->end() ? cv::plist::createObject(found->second) : nullptr;
}

/// Says why something is not collected: it will not be stored either.
void refuse(const std::string& what, const std::string& reason) {
    cv::report(SET_VALUE, {what, ": ", reason});
    cv::storeFailed(what.c_str(), reason.c_str());
}

}  // namespace

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host) {
    const auto target = targetOf(SET_VALUE, domain, user, host);
    if (!target) {
        cv::storeFailed((cv::utf8Of(domain).value_or("") + ", a preference").c_str(),
                        "its domain, user or host cannot be used");
        return;
    }
    const auto name = cv::utf8Of(key);
    if (!name) {
        refuse(target->domain + ", a key", "a key must be text without unpaired surrogates");
        return;
    }
    std::optional<cv::plist::Value> change;
    if (value != nullptr) {
        auto copy = cv::plist::valueOf(value);
        if (!copy) {
            refuse(target->domain + ", key \"" + *name + "\"", "the value is refused: " + copy.fault().reason);
            return;
        }
        change = std::move(*copy);
    }
    const std::lock_guard<std::mutex> lock(collected().mutex);
    collected().changes[*target].insert_or_assign(*name, std::move(change));
}

CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef domain, CFStringRef user, CFStringRef host) {
    const auto target = targetOf("CFPreferencesCopyValue", domain, user, host);
    const auto name = cv::utf8Of(key);
    if (!target || !name) {
        return nullptr;
    }
    return copyValue(*target, *name);
}

Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    const auto target = targetOf(SYNCHRONIZE, domain, user, host);
    if (!target) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(collected().mutex);
    const auto changes = collected().changes.find(*target);
    if (changes == collected().changes.end() || changes->second.empty()) {
        return true;
    }
    if (!storeOrReport(*target, changes->second)) {
        return false;
    }
    collected().changes.erase(changes);
    return true;
}
