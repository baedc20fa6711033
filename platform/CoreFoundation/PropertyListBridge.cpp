#include "platform/CoreFoundation/PropertyListBridge.h"

#include <cmath>
#include <type_traits>

#include "platform/CoreFoundation/Collections.h"
#include "platform/CoreFoundation/Number.h"
#include "platform/CoreFoundation/String.h"
#include "platform/CoreFoundation/Values.h"
#include "platform/PropertyList/PropertyList.h"

namespace cv {

const objc_class DATE_CLASS("NSDate", OBJECT_METACLASS, &OBJECT_CLASS, nullptr, valueOf<DateObject>());
const objc_class DATA_CLASS("NSData", OBJECT_METACLASS, &OBJECT_CLASS, nullptr, valueOf<DataObject>());

namespace plist {

namespace {

/// Makes a value of an object, and stops with the reason at the first part that none can carry.
class Reader {
public:
    explicit Reader(std::string& reason) : reason_(reason) {}

    std::optional<Value> read(CFTypeRef object, unsigned depth) {
        const objc_class* const type = object != nullptr ? cv::object(object).isa : nullptr;
        if (type == &STRING_CLASS) {
            return readText(object);
        }
        if (type == &BOOLEAN_CLASS) {
            return Value{cv::object<__CFBoolean>(object).value};
        }
        if (type == &NUMBER_CLASS) {
            return readNumber(cv::object<__CFNumber>(object));
        }
        if (type == &DATA_CLASS) {
            return Value{Data{cv::object<DataObject>(object).bytes}};
        }
        if (type == &DATE_CLASS) {
            const double seconds = cv::object<DateObject>(object).seconds;
            return std::isfinite(seconds) ? Value{Date{seconds}} : refuse("a date in it is no number");
        }
        return readCollection(object, type, depth);
    }

private:
    std::optional<Value> refuse(const char* why) {
        reason_ = why;
        return std::nullopt;
    }

    std::optional<Value> readText(CFTypeRef object) {
        auto text = utf8Of(object);
        return text ? std::optional(Value{std::move(*text)}) : refuse("text in it has half a surrogate pair");
    }

    static Value readNumber(const __CFNumber& number) {
        if (number.isFloating()) {
            return Value{Real{number.real(), number.type == kCFNumberFloat32Type}};
        }
        return Value{Integer{number.bits(), number.isNegative()}};
    }

    std::optional<Value> readCollection(CFTypeRef object, const objc_class* type, unsigned depth) {
        if (type != &ARRAY_CLASS && type != &DICTIONARY_CLASS) {
            return refuse("it is no property list");
        }
        if (depth == MAX_DEPTH) {
            return refuse("it is nested too deeply");
        }
        return type == &ARRAY_CLASS ? readArray(cv::object<__CFArray>(object), depth)
                                    : readDictionary(cv::object<__CFDictionary>(object), depth);
    }

    std::optional<Value> readArray(const __CFArray& array, unsigned depth) {
        Array values;
        for (const auto& item : array.items) {
            auto value = read(item.get(), depth + 1);
            if (!value) {
                return std::nullopt;
            }
            values.push_back(std::move(*value));
        }
        return Value{std::move(values)};
    }

    std::optional<Value> readDictionary(const __CFDictionary& dictionary, unsigned depth) {
        Dictionary values;
        for (const auto& [key, item] : dictionary.entries) {
            auto name = utf8Of(key.get());
            if (!name) {
                return refuse("a key in it is no text, or has half a surrogate pair");
            }
            auto value = read(item.get(), depth + 1);
            if (!value) {
                return std::nullopt;
            }
            values.emplace(std::move(*name), std::move(*value));
        }
        return Value{std::move(values)};
    }

    std::string& reason_;
};

using AnyObject = Owned<objc_object>;

AnyObject newObject(const Value& value);

/// Makes the object of each kind of value.
struct Maker {
    AnyObject operator()(bool isTrue) const { return retained<objc_object>(*(isTrue ? kCFBooleanTrue : kCFBooleanFalse)); }
    AnyObject operator()(const Integer& integer) const {
        return AnyObject(integer.isNegative
                             ? new __CFNumber(static_cast<std::int64_t>(integer.bits), kCFNumberSInt64Type)
                             : new __CFNumber(integer.bits));
    }
    AnyObject operator()(const Real& real) const {
        return AnyObject(new __CFNumber(real.value, real.isSingle ? kCFNumberFloat32Type : kCFNumberFloat64Type));
    }
    AnyObject operator()(const Date& date) const { return AnyObject(new DateObject(date.seconds)); }
    AnyObject operator()(const Data& data) const { return AnyObject(new DataObject(data.bytes)); }
    AnyObject operator()(const std::string& text) const { return AnyObject(createString(text)); }

    AnyObject operator()(const Uid& uid) const {
        __CFDictionary::Entries entries;
        entries.emplace(AnyObject(createString("CF$UID")), AnyObject(new __CFNumber(uid.number)));
        return AnyObject(new __CFDictionary(std::move(entries)));
    }

    AnyObject operator()(const Array& array) const {
        __CFArray::Items items;
        items.reserve(array.size());
        for (const Value& item : array) {
            items.push_back(newObject(item));
        }
        return AnyObject(new __CFArray(std::move(items)));
    }

    AnyObject operator()(const Dictionary& dictionary) const {
        __CFDictionary::Entries entries;
        entries.reserve(dictionary.size());
        for (const auto& [key, item] : dictionary) {
            entries.emplace(AnyObject(createString(key)), newObject(item));
        }
        return AnyObject(new __CFDictionary(std::move(entries)));
    }
};

AnyObject newObject(const Value& value) {
    return std::visit(Maker(), value.content);
}

}  // namespace

std::optional<Value> valueOf(CFPropertyListRef object, std::string& reason) {
    return Reader(reason).read(object, 0);
}

CFPropertyListRef createObject(const Value& value) {
    return newObject(value).release();
}

}  // namespace plist

}  // namespace cv
