#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "platform/CoreFoundation/Bundle.h"
#include "platform/CoreFoundation/Number.h"
#include "platform/CoreFoundation/String.h"
#include "platform/Report.h"

namespace {

const __CFString DYNAMIC_REGISTRATION_KEY(u"CFPlugInDynamicRegistration");
const __CFString FACTORIES_KEY(u"CFPlugInFactories");
const __CFString TYPES_KEY(u"CFPlugInTypes");

}  // namespace

const CFStringRef kCFPlugInDynamicRegistrationKey = &DYNAMIC_REGISTRATION_KEY;
const CFStringRef kCFPlugInFactoriesKey = &FACTORIES_KEY;
const CFStringRef kCFPlugInTypesKey = &TYPES_KEY;

namespace {

using Identifier = std::array<UInt8, sizeof(CFUUIDBytes)>;

struct Factory {
    CFPlugInRef plugIn = nullptr;  ///< retained as long as the process lives
    std::string function;
    std::set<Identifier> types;
    long instances = 0;
};

using Factories = std::map<Identifier, Factory>;

/// Every factory of the process. A plug-in, once registered, stays so to the end of the process: its code stays loaded,
/// and its instances may outlive their creator's reference to it.
struct Registry {
    std::mutex mutex;
    Factories factories;
};

Registry& registry() {
    static auto* const instance = new Registry;
    return *instance;
}

Identifier identifierOf(CFUUIDRef uuid) {
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(uuid);
    Identifier identifier{};
    std::memcpy(identifier.data(), &bytes, sizeof bytes);
    return identifier;
}

cv::Owned<objc_object> makeUuid(const Identifier& identifier) {
    CFUUIDBytes bytes;
    std::memcpy(&bytes, identifier.data(), sizeof bytes);
    return cv::Owned<objc_object>(&cv::object(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, bytes)));
}

/// The identifier that the text spells; nothing for another object or text.
std::optional<Identifier> parseIdentifier(CFTypeRef text) {
    const CFUUIDRef uuid =
        CFUUIDCreateFromString(kCFAllocatorDefault, cv::objectOf<__CFString>(cv::STRING_CLASS, text));
    if (uuid == nullptr) {
        return std::nullopt;
    }
    const Identifier identifier = identifierOf(uuid);
    CFRelease(uuid);
    return identifier;
}

std::string describe(CFUUIDRef uuid) {
    const cv::Owned<__CFString> text(CFUUIDCreateString(kCFAllocatorDefault, uuid));
    return cv::utf8Of(text.get()).value_or("");
}

/// The entries of the dictionary at `key` in Info.plist; null when it is missing, empty or something else.
const __CFDictionary::Entries* entriesFor(CFStringRef key, const __CFBundle& bundle) {
    const void* const value = CFDictionaryGetValue(bundle.info.get(), key);
    const __CFDictionary* const dictionary = cv::objectOf<__CFDictionary>(cv::DICTIONARY_CLASS, value);
    return dictionary != nullptr && !dictionary->entries.empty() ? &dictionary->entries : nullptr;
}

/// Whether the plug-in asks for static registration, or says nothing about it.
bool isStatic(const __CFBundle& bundle) {
    const void* const value = CFDictionaryGetValue(bundle.info.get(), kCFPlugInDynamicRegistrationKey);
    return value == nullptr || CFEqual(value, CFSTR("NO")) || CFEqual(value, kCFBooleanFalse) ||
           CFEqual(value, cv::Owned<objc_object>(new __CFNumber(std::uint64_t{0})).get());
}

/// What CFPlugInFactories registers.
cv::Result<Factories> readFactories(CFPlugInRef plugIn, const Factories& registered) {
    const auto* const entries = entriesFor(kCFPlugInFactoriesKey, *plugIn);
    if (entries == nullptr) {
        return cv::Fault{plugIn->path, "CFPlugInFactories in Info.plist registers no factory"};
    }
    Factories found;
    for (const auto& [key, value] : *entries) {
        const auto identifier = parseIdentifier(key.get());
        const auto function = cv::utf8Of(value.get());
        const std::string name = cv::utf8Of(key.get()).value_or("");
        if (!identifier) {
            return cv::Fault{plugIn->path, "\"" + name + "\" in CFPlugInFactories of Info.plist is not a UUID"};
        }
        if (!function || function->empty()) {
            return cv::Fault{plugIn->path, "CFPlugInFactories in Info.plist names no function for " + name};
        }
        const auto other = registered.find(*identifier);
        if (other != registered.end()) {
            return cv::Fault{plugIn->path,
                             "its factory " + name + " is already registered by " + other->second.plugIn->path};
        }
        found[*identifier] = Factory{plugIn, *function, {}, 0};
    }
    return found;
}

/// Gives the factories of one entry of CFPlugInTypes its type.
std::optional<cv::Fault> readMakers(const __CFBundle& plugIn, const Identifier& type, const std::string& name,
                                    CFTypeRef value, Factories& found) {
    const __CFArray* const makers = cv::objectOf<__CFArray>(cv::ARRAY_CLASS, value);
    if (makers == nullptr) {
        return cv::Fault{plugIn.path, "CFPlugInTypes in Info.plist has no array of factories for " + name};
    }
    for (const auto& maker : makers->items) {
        const auto identifier = parseIdentifier(maker.get());
        const auto factory = identifier ? found.find(*identifier) : found.end();
        if (factory == found.end()) {
            return cv::Fault{plugIn.path, "CFPlugInTypes in Info.plist names a factory for " + name +
                                              " that CFPlugInFactories lacks"};
        }
        factory->second.types.insert(type);
    }
    return std::nullopt;
}

/// Reads CFPlugInTypes into the factories found.
std::optional<cv::Fault> readTypes(CFPlugInRef plugIn, Factories& found) {
    const auto* const entries = entriesFor(kCFPlugInTypesKey, *plugIn);
    if (entries == nullptr) {
        return cv::Fault{plugIn->path, "CFPlugInTypes in Info.plist registers no type"};
    }
    for (const auto& [key, value] : *entries) {
        const auto type = parseIdentifier(key.get());
        const std::string name = cv::utf8Of(key.get()).value_or("");
        if (!type) {
            return cv::Fault{plugIn->path, "\"" + name + "\" in CFPlugInTypes of Info.plist is not a UUID"};
        }
        if (auto fault = readMakers(*plugIn, *type, name, value.get(), found)) {
            return fault;
        }
    }
    return std::nullopt;
}

bool isRegistered(const Factories& factories, CFPlugInRef plugIn) {
    return std::any_of(factories.begin(), factories.end(),
                       [plugIn](const auto& factory) { return factory.second.plugIn == plugIn; });
}

/// Registers the plug-in's factories.
std::optional<cv::Fault> registerPlugIn(CFPlugInRef plugIn) {
    Registry& known = registry();
    const std::lock_guard<std::mutex> lock(known.mutex);
    if (isRegistered(known.factories, plugIn)) {
        return std::nullopt;
    }
    if (!isStatic(*plugIn)) {
        return cv::Fault{plugIn->path, "CFPlugInDynamicRegistration in Info.plist must be the string NO"};
    }
    auto found = readFactories(plugIn, known.factories);
    if (!found) {
        return found.fault();
    }
    if (auto fault = readTypes(plugIn, *found)) {
        return fault;
    }
    known.factories.merge(*found);
    CFRetain(plugIn);
    return std::nullopt;
}

using FactoryFunction = void* (*)(CFAllocatorRef, CFUUIDRef);

constexpr const char* CREATE_INSTANCE = "CFPlugInInstanceCreate";

/// The registered factory, if it is one for this type; nothing, with a line on standard error, when it is not.
std::optional<Factory> findFactory(CFUUIDRef factoryID, CFUUIDRef typeID) {
    Registry& known = registry();
    const std::lock_guard<std::mutex> lock(known.mutex);
    const auto found = known.factories.find(identifierOf(factoryID));
    if (found == known.factories.end()) {
        cv::bundleFailed(CREATE_INSTANCE, "the factory " + describe(factoryID) + " is not registered");
        return std::nullopt;
    }
    if (found->second.types.count(identifierOf(typeID)) == 0) {
        cv::bundleFailed(CREATE_INSTANCE,
                         "the factory " + describe(factoryID) + " is not registered for the type " + describe(typeID));
        return std::nullopt;
    }
    return found->second;
}

/// The loaded function of the factory; null, with a line on standard error, when it cannot be called for this type.
FactoryFunction functionFor(CFUUIDRef factoryID, CFUUIDRef typeID) {
    const auto factory = findFactory(factoryID, typeID);
    if (!factory || !CFBundleLoadExecutable(factory->plugIn)) {
        return nullptr;
    }
    const cv::Owned<__CFString> name(cv::createString(factory->function));
    void* const address = CFBundleGetFunctionPointerForName(factory->plugIn, name.get());
    if (address == nullptr) {
        cv::bundleFailed(CREATE_INSTANCE,
                         factory->plugIn->path + ": its code exports no function " + factory->function);
    }
    return reinterpret_cast<FactoryFunction>(address);
}

/// Adds to the count of a factory's instances; false when there is no such factory or the count would be negative.
bool countInstances(CFUUIDRef factoryID, long change) {
    Registry& known = registry();
    const std::lock_guard<std::mutex> lock(known.mutex);
    const auto factory = factoryID != nullptr ? known.factories.find(identifierOf(factoryID)) : known.factories.end();
    if (factory == known.factories.end() || factory->second.instances + change < 0) {
        return false;
    }
    factory->second.instances += change;
    return true;
}

}  // namespace

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url) {
    std::unique_ptr<__CFBundle, cv::ReleaseObject> plugIn(CFBundleCreate(allocator, url));
    if (plugIn == nullptr) {
        return nullptr;
    }
    if (const auto fault = registerPlugIn(plugIn.get())) {
        cv::bundleFailed("CFPlugInCreate", fault->text());
        return nullptr;
    }
    return plugIn.release();
}

CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn) {
    return plugIn;
}

CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef typeID, CFPlugInRef plugIn) {
    if (typeID == nullptr || plugIn == nullptr) {
        return nullptr;
    }
    Registry& known = registry();
    const std::lock_guard<std::mutex> lock(known.mutex);
    __CFArray::Items found;
    for (const auto& [identifier, factory] : known.factories) {
        if (factory.plugIn == plugIn && factory.types.count(identifierOf(typeID)) != 0) {
            found.push_back(makeUuid(identifier));
        }
    }
    return new __CFArray(std::move(found));
}

void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factoryID, CFUUIDRef typeID) {
    if (factoryID == nullptr || typeID == nullptr) {
        cv::bundleFailed(CREATE_INSTANCE, "called without a factory or a type");
        return nullptr;
    }
    // No lock is held around the plug-in's own function: it may come back here.
    const FactoryFunction function = functionFor(factoryID, typeID);
    return function != nullptr ? function(allocator, typeID) : nullptr;
}

void CFPlugInAddInstanceForFactory(CFUUIDRef factoryID) {
    if (!countInstances(factoryID, 1)) {
        cv::report("CFPlugInAddInstanceForFactory", "the factory is not registered");
    }
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryID) {
    if (!countInstances(factoryID, -1)) {
        cv::report("CFPlugInRemoveInstanceForFactory", "the factory has no instance left");
    }
}
