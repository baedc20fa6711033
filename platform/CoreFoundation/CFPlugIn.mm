#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/Bundle.h"
#include "platform/CoreFoundation/PropertyListBridge.h"
#include "platform/Report.h"

const CFStringRef kCFPlugInDynamicRegistrationKey = reinterpret_cast<CFStringRef>(@"CFPlugInDynamicRegistration");
const CFStringRef kCFPlugInFactoriesKey = reinterpret_cast<CFStringRef>(@"CFPlugInFactories");
const CFStringRef kCFPlugInTypesKey = reinterpret_cast<CFStringRef>(@"CFPlugInTypes");

namespace {

using Identifier = std::array<UInt8, 16>;
using Lock = std::lock_guard<std::recursive_mutex>;

struct Factory {
    CFPlugInRef plugIn = nullptr;
    std::string function;
    std::set<Identifier> types;
    long instances = 0;
};

using Factories = std::map<Identifier, Factory>;

/// Every factory of the process. A plug-in, once registered, stays so to the end of the process: its code stays loaded,
/// and its instances may outlive their creator's reference to it.
Factories& factories() {
    static auto* const registered = new Factories;
    return *registered;
}

Identifier identifierOf(CFUUIDRef uuid) {
    const CFUUIDBytes b = CFUUIDGetUUIDBytes(uuid);
    return {b.byte0, b.byte1, b.byte2,  b.byte3,  b.byte4,  b.byte5,  b.byte6,  b.byte7,
            b.byte8, b.byte9, b.byte10, b.byte11, b.byte12, b.byte13, b.byte14, b.byte15};
}

CFUUIDRef createUuid(const Identifier& i) {
    return CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, {i[0], i[1], i[2], i[3], i[4], i[5], i[6], i[7], i[8], i[9],
                                                           i[10], i[11], i[12], i[13], i[14], i[15]});
}

/// The identifier that the text spells; nothing for another object or text.
std::optional<Identifier> parseIdentifier(id text) {
    if (![text isKindOfClass:[NSString class]]) {
        return std::nullopt;
    }
    const CFUUIDRef uuid = CFUUIDCreateFromString(kCFAllocatorDefault, cv::reference<CFStringRef>(text));
    if (uuid == nullptr) {
        return std::nullopt;
    }
    const Identifier identifier = identifierOf(uuid);
    CFRelease(uuid);
    return identifier;
}

std::string describe(CFUUIDRef uuid) {
    const CFStringRef text = CFUUIDCreateString(kCFAllocatorDefault, uuid);
    const std::string utf8 = cv::utf8Of(text).value_or("");
    CFRelease(text);
    return utf8;
}

/// The value of `key` in Info.plist as a dictionary; null when it is missing or something else.
NSDictionary* dictionaryFor(CFStringRef key, CFBundleRef bundle) {
    const id value = cv::object(CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle), key));
    return [value isKindOfClass:[NSDictionary class]] ? value : nil;
}

/// Whether the plug-in asks for static registration, or says nothing about it.
bool isStatic(CFBundleRef bundle) {
    const id value =
        cv::object(CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle), kCFPlugInDynamicRegistrationKey));
    if ([value isKindOfClass:[NSNumber class]]) {
        return ![value boolValue];
    }
    return value == nil || [value isEqual:@"NO"];
}

/// Reads CFPlugInFactories. Returns what is wrong with it, or an empty text.
std::string readFactories(CFPlugInRef plugIn, Factories& found) {
    NSDictionary* entries = dictionaryFor(kCFPlugInFactoriesKey, plugIn);
    if ([entries count] == 0) {
        return "CFPlugInFactories in Info.plist registers no factory";
    }
    for (const id key : cv::each([entries keyEnumerator])) {
        const auto identifier = parseIdentifier(key);
        const auto function = cv::utf8Of(cv::reference<CFTypeRef>([entries objectForKey:key]));
        const std::string name = cv::utf8Of(cv::reference<CFTypeRef>(key)).value_or("");
        if (!identifier) {
            return "\"" + name + "\" in CFPlugInFactories of Info.plist is no identifier";
        }
        if (!function || function->empty()) {
            return "CFPlugInFactories in Info.plist names no function for " + name;
        }
        const auto other = factories().find(*identifier);
        if (other != factories().end()) {
            return "its factory " + name + " is already registered by " + cv::bundlePath(other->second.plugIn);
        }
        found[*identifier] = Factory{plugIn, *function, {}, 0};
    }
    return {};
}

/// Reads CFPlugInTypes into the factories found. Returns what is wrong with it, or an empty text.
std::string readTypes(CFPlugInRef plugIn, Factories& found) {
    NSDictionary* entries = dictionaryFor(kCFPlugInTypesKey, plugIn);
    if ([entries count] == 0) {
        return "CFPlugInTypes in Info.plist registers no type";
    }
    for (const id key : cv::each([entries keyEnumerator])) {
        const auto type = parseIdentifier(key);
        const std::string name = cv::utf8Of(cv::reference<CFTypeRef>(key)).value_or("");
        if (!type) {
            return "\"" + name + "\" in CFPlugInTypes of Info.plist is no identifier";
        }
        NSArray* makers = [entries objectForKey:key];
        if (![makers isKindOfClass:[NSArray class]]) {
            return "CFPlugInTypes in Info.plist has no array of factories for " + name;
        }
        for (const id maker : cv::each([makers objectEnumerator])) {
            const auto identifier = parseIdentifier(maker);
            const auto factory = identifier ? found.find(*identifier) : found.end();
            if (factory == found.end()) {
                return "CFPlugInTypes in Info.plist names a factory for " + name + " that CFPlugInFactories lacks";
            }
            factory->second.types.insert(*type);
        }
    }
    return {};
}

bool isRegistered(CFPlugInRef plugIn) {
    for (const auto& [identifier, factory] : factories()) {
        if (factory.plugIn == plugIn) {
            return true;
        }
    }
    return false;
}

/// Registers the plug-in's factories. Returns what is wrong with it, or an empty text.
std::string registerPlugIn(CFPlugInRef plugIn) {
    if (isRegistered(plugIn)) {
        return {};
    }
    if (!isStatic(plugIn)) {
        return "CFPlugInDynamicRegistration in Info.plist must be the string NO";
    }
    Factories found;
    std::string fault = readFactories(plugIn, found);
    if (fault.empty()) {
        fault = readTypes(plugIn, found);
    }
    if (fault.empty()) {
        factories().merge(found);
        CFRetain(plugIn);
    }
    return fault;
}

CFArrayRef createFactoryArray(CFUUIDRef typeID, CFPlugInRef plugIn) {
    if (typeID == nullptr) {
        return nullptr;
    }
    return cv::guarded<CFArrayRef>(nullptr, [=] {
        const Lock lock(cv::bundleMutex());
        const Identifier type = identifierOf(typeID);
        NSMutableArray* found = [[NSMutableArray alloc] init];
        for (const auto& [identifier, factory] : factories()) {
            if (factory.types.count(type) != 0 && (plugIn == nullptr || factory.plugIn == plugIn)) {
                const CFUUIDRef uuid = createUuid(identifier);
                [found addObject:cv::object(uuid)];
                CFRelease(uuid);
            }
        }
        return cv::reference<CFArrayRef>(found);
    });
}

using FactoryFunction = void* (*)(CFAllocatorRef, CFUUIDRef);

/// The loaded function of the factory; null, with a line on standard error, when it cannot be called for this type.
FactoryFunction functionFor(CFUUIDRef factoryID, CFUUIDRef typeID) {
    constexpr const char* WHO = "CFPlugInInstanceCreate";
    const Lock lock(cv::bundleMutex());
    const auto found = factories().find(identifierOf(factoryID));
    if (found == factories().end()) {
        cv::report(WHO, "the factory " + describe(factoryID) + " is not registered");
        return nullptr;
    }
    const Factory& factory = found->second;
    if (factory.types.count(identifierOf(typeID)) == 0) {
        cv::report(WHO, "the factory " + describe(factoryID) + " is not registered for the type " + describe(typeID));
        return nullptr;
    }
    if (!CFBundleLoadExecutable(factory.plugIn)) {
        return nullptr;
    }
    const CFStringRef name =
        CFStringCreateWithCString(kCFAllocatorDefault, factory.function.c_str(), kCFStringEncodingUTF8);
    void* const address = CFBundleGetFunctionPointerForName(factory.plugIn, name);
    CFRelease(name);
    if (address == nullptr) {
        cv::report(WHO, cv::bundlePath(factory.plugIn) + ": its code exports no function " + factory.function);
    }
    return reinterpret_cast<FactoryFunction>(address);
}

}  // namespace

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url) {
    const CFPlugInRef plugIn = CFBundleCreate(allocator, url);
    if (plugIn == nullptr) {
        return nullptr;
    }
    const std::string fault = cv::guarded<std::string>("an exception was raised", [=] {
        const Lock lock(cv::bundleMutex());
        return registerPlugIn(plugIn);
    });
    if (fault.empty()) {
        return plugIn;
    }
    cv::report("CFPlugInCreate", cv::bundlePath(plugIn) + ": " + fault);
    CFRelease(plugIn);
    return nullptr;
}

CFBundleRef CFPlugInGetBundle(CFPlugInRef plugIn) {
    return plugIn;
}

CFArrayRef CFPlugInFindFactoriesForPlugInType(CFUUIDRef typeID) {
    return createFactoryArray(typeID, nullptr);
}

CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef typeID, CFPlugInRef plugIn) {
    return plugIn != nullptr ? createFactoryArray(typeID, plugIn) : nullptr;
}

void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factoryID, CFUUIDRef typeID) {
    if (factoryID == nullptr || typeID == nullptr) {
        cv::report("CFPlugInInstanceCreate", "called without a factory or a type");
        return nullptr;
    }
    // No guard and no lock around the plug-in's own function: its exceptions are the caller's.
    const auto function = cv::guarded<FactoryFunction>(nullptr, [=] { return functionFor(factoryID, typeID); });
    return function != nullptr ? function(allocator, typeID) : nullptr;
}

void CFPlugInAddInstanceForFactory(CFUUIDRef factoryID) {
    const Lock lock(cv::bundleMutex());
    const auto factory = factoryID != nullptr ? factories().find(identifierOf(factoryID)) : factories().end();
    if (factory == factories().end()) {
        cv::report("CFPlugInAddInstanceForFactory", "the factory is not registered");
        return;
    }
    ++factory->second.instances;
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factoryID) {
    const Lock lock(cv::bundleMutex());
    const auto factory = factoryID != nullptr ? factories().find(identifierOf(factoryID)) : factories().end();
    if (factory == factories().end() || factory->second.instances == 0) {
        cv::report("CFPlugInRemoveInstanceForFactory", "the factory has no instance left");
        return;
    }
    --factory->second.instances;
}
