#include "platform/CoreFoundation/PropertyListBridge.h"

#include <CoreFoundation/CFString.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/CoreFoundation/Bridge.h"
#include "platform/CoreFoundation/TextConversion.h"
#include "platform/CoreFoundation/UnitString.h"

namespace cv {

std::optional<std::string> utf8Of(CFTypeRef text) {
    if (text == nullptr || ![object(text) isKindOfClass:[NSString class]]) {
        return std::nullopt;
    }
    const std::u16string units = unitsOf(object<NSString*>(text));
    if (units.find(u'\0') != std::u16string::npos) {
        return std::nullopt;
    }
    std::string utf8(3 * units.size(), '\0');
    const auto size = encodeText(units, kCFStringEncodingUTF8, utf8.data(), utf8.size());
    if (!size) {
        return std::nullopt;
    }
    utf8.resize(*size);
    return utf8;
}

namespace plist {

namespace {

/// A new string with the text, a leading U+FEFF included: decoding drops one such mark, so it is given one to drop.
NSString* newString(std::string_view utf8) {
    const auto units = decodeText("\xEF\xBB\xBF" + std::string(utf8), kCFStringEncodingUTF8);
    return units ? [CvUnitString newWithUnits:units->data() length:units->size() immortal:NO] : nil;
}

Tree refuse(std::string& reason, const char* why) {
    reason = why;
    return nullptr;
}

Tree fromObject(id value, unsigned depth, std::string& reason);

Tree fromNumber(NSNumber* number) {
    if ([number isKindOfClass:[[NSNumber numberWithBool:YES] class]]) {
        return Tree(plist_new_bool([number boolValue] ? 1 : 0));
    }
    const char type = *[number objCType];
    if (type == 'f' || type == 'd') {
        return Tree(plist_new_real([number doubleValue]));
    }
    const bool isUnsigned = std::strchr("CSILQ", type) != nullptr;
    const long long value = [number longLongValue];
    return makeInteger({[number unsignedLongLongValue], !isUnsigned && value < 0});
}

Tree fromArray(NSArray* array, unsigned depth, std::string& reason) {
    Tree tree(plist_new_array());
    for (const id item : each([array objectEnumerator])) {
        Tree node = fromObject(item, depth + 1, reason);
        if (node == nullptr) {
            return nullptr;
        }
        plist_array_append_item(tree.get(), node.release());
    }
    return tree;
}

Tree fromDictionary(NSDictionary* dictionary, unsigned depth, std::string& reason) {
    Tree tree(plist_new_dict());
    for (const id key : each([dictionary keyEnumerator])) {
        const auto name = utf8Of(reference<CFTypeRef>(key));
        if (!name) {
            return refuse(reason, "a key in it is no text, or has a NUL or half a surrogate pair");
        }
        Tree node = fromObject([dictionary objectForKey:key], depth + 1, reason);
        if (node == nullptr) {
            return nullptr;
        }
        plist_dict_set_item(tree.get(), name->c_str(), node.release());
    }
    return tree;
}

Tree fromString(NSString* string, std::string& reason) {
    const auto text = utf8Of(reference<CFTypeRef>(string));
    return text ? Tree(plist_new_string(text->c_str()))
                : refuse(reason, "text in it has a NUL or half a surrogate pair");
}

Tree fromObject(id value, unsigned depth, std::string& reason) {
    if ([value isKindOfClass:[NSString class]]) {
        return fromString(value, reason);
    }
    if ([value isKindOfClass:[NSNumber class]]) {
        return fromNumber(value);
    }
    if ([value isKindOfClass:[NSDate class]]) {
        const double seconds = [value timeIntervalSinceReferenceDate];
        return std::isfinite(seconds) ? makeDate(seconds) : refuse(reason, "a date in it is no number");
    }
    if ([value isKindOfClass:[NSData class]]) {
        return Tree(plist_new_data(static_cast<const char*>([value bytes]), [value length]));
    }
    const bool isArray = [value isKindOfClass:[NSArray class]];
    if (!isArray && ![value isKindOfClass:[NSDictionary class]]) {
        return refuse(reason, "it is no property list");
    }
    if (depth == MAX_DEPTH) {
        return refuse(reason, "it is nested too deeply");
    }
    return isArray ? fromArray(value, depth, reason) : fromDictionary(value, depth, reason);
}

id newInteger(plist_t node) {
    const Integer value = integerOf(node);
    return value.negative ? [[NSNumber alloc] initWithLongLong:static_cast<long long>(value.bits)]
                          : [[NSNumber alloc] initWithUnsignedLongLong:value.bits];
}

id newObject(plist_t node);

id newArray(plist_t node) {
    const uint32_t count = plist_array_get_size(node);
    NSMutableArray* array = [[NSMutableArray alloc] initWithCapacity:count];
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const std::unique_ptr<void, void (*)(void*)> owner(iterator, std::free);
    for (uint32_t i = 0; i < count; ++i) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator, &item);
        const id value = newObject(item);
        [array addObject:value];
        [value release];
    }
    return array;
}

id newDictionary(plist_t node) {
    NSMutableDictionary* dictionary = [[NSMutableDictionary alloc] init];
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const std::unique_ptr<void, void (*)(void*)> owner(iterator, std::free);
    for (uint32_t i = 0, count = plist_dict_get_size(node); i < count; ++i) {
        char* name = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &name, &item);
        const std::unique_ptr<char, void (*)(void*)> nameOwner(name, std::free);
        NSString* key = newString(name);
        const id value = newObject(item);
        [dictionary setObject:value forKey:key];
        [value release];
        [key release];
    }
    return dictionary;
}

id newUid(plist_t node) {
    uint64_t value = 0;
    plist_get_uid_val(node, &value);
    NSNumber* number = [[NSNumber alloc] initWithUnsignedLongLong:value];
    NSDictionary* dictionary = [[NSDictionary alloc] initWithObjectsAndKeys:number, @"CF$UID", nil];
    [number release];
    return dictionary;
}

id newReal(plist_t node) {
    double value = 0;
    plist_get_real_val(node, &value);
    return [[NSNumber alloc] initWithDouble:value];
}

id newObject(plist_t node) {
    uint64_t size = 0;
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN:
            return [[NSNumber numberWithBool:plist_bool_val_is_true(node) != 0] retain];
        case PLIST_UINT:
            return newInteger(node);
        case PLIST_REAL:
            return newReal(node);
        case PLIST_STRING: {
            const char* text = plist_get_string_ptr(node, &size);
            return newString({text, static_cast<std::size_t>(size)});
        }
        case PLIST_DATE:
            return [[NSDate alloc] initWithTimeIntervalSinceReferenceDate:dateOf(node)];
        case PLIST_DATA: {
            const char* bytes = plist_get_data_ptr(node, &size);
            return [[NSData alloc] initWithBytes:bytes length:size];
        }
        case PLIST_ARRAY:
            return newArray(node);
        case PLIST_DICT:
            return newDictionary(node);
        case PLIST_UID:
            return newUid(node);
        default:
            return nil;
    }
}

}  // namespace

Tree fromReference(CFPropertyListRef value, std::string& reason) {
    return fromObject(object(value), 1, reason);
}

CFPropertyListRef createReference(plist_t node) {
    return reference<CFPropertyListRef>(newObject(node));
}

}  // namespace plist

}  // namespace cv
