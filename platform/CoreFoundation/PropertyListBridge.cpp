#include "platform/CoreFoundation/PropertyListBridge.h"

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
    /// What is wrong, when reading stopped.
    const char* reason() const { return reason_; }

    bool read(CFTypeRef object, unsigned depth, Value& value) {
        const objc_class* const type = object != nullptr ? cv::object(object).isa : nullptr;
        if (type == &STRING_CLASS) {
            return readText(object, value.content.emplace<std::string>(), "text in it has an unpaired surrogate");
        }
        if (type == &BOOLEAN_CLASS) {
            value.content.emplace<bool>(cv::object<__CFBoolean>(object).value);
        } else if (type == &NUMBER_CLASS) {
            readNumber(cv::object<__CFNumber>(object), value);
        } else if (type == &DATA_CLASS) {
            value.content.emplace<Data>(Data{cv::object<DataObject>(object).bytes});
        } else if (type == &DATE_CLASS) {
            value.content.emplace<Date>(Date{cv::object<DateObject>(object).seconds});
        } else {
            return readCollection(object, type, depth, value);
        }
        return true;
    }

private:
    bool refuse(const char* why) {
        reason_ = why;
        return false;
    }

    bool readText(CFTypeRef object, std::string& text, const char* whyNot) {
        auto utf8 = utf8Of(object);
        if (utf8) {
            text = std::move(*utf8);
        }
        return utf8 || refuse(whyNot);
    }

    static void readNumber(const __CFNumber& number, Value& value) {
        if (number.isFloating()) {
            value.content.emplace<Real>(Real{number.real(), number.type == kCFNumberFloat32Type});
        } else {
            value.content.emplace<Integer>(Integer{number.bits(), number.isNegative()});
        }
    }

    bool readCollection(CFTypeRef object, const objc_class* type, unsigned depth, Value& value) {
        if (type != &ARRAY_CLASS && type != &DICTIONARY_CLASS) {
            return refuse("it is not a property list");
        }
        if (depth == MAX_DEPTH) {
            return refuse("it is nested too deeply");
        }
        return type == &ARRAY_CLASS
                   ? readArray(cv::object<__CFArray>(object), depth, value.content.emplace<Array>())
                   : readDictionary(cv::object<__CFDictionary>(object), depth, value.content.emplace<Dictionary>());
    }

    bool readArray(const __CFArray& array, unsigned depth, Array& values) {
        for (const auto& item : array.items) {
            if (!read(item.get(), depth + 1, values.emplace_back())) {
                return false;
            }
        }
        return true;
    }

    bool readDictionary(const __CFDictionary& dictionary, unsigned depth, Dictionary& values) {
        for (const auto& [key, item] : dictionary.entries) {
            std::string name;
            if (!readText(key.get(), name, "a key in it is not text, or has an unpaired surrogate") ||
                !read(item.get(), depth + 1, values[name])) {
                return false;
            }
        }
        return true;
    }

    const char* reason_ = "";
};

using AnyObject = Owned<objc_object>;

AnyObject newObject(const Value& value);

/// Makes the object of each kind of value.
struct Maker {
    AnyObject operator()(bool isTrue) const {
        return retained<objc_object>(*(isTrue ? kCFBooleanTrue : kCFBooleanFalse));
    }
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

Result<Value> valueOf(CFPropertyListRef object) {
    Value value;
    Reader reader;
    if (!reader.read(object, 1, value)) {
        return Fault{"", reader.reason()};
    }
    return value;
}

CFPropertyListRef createObject(const Value& value) {
    return newObject(value).release();
}

}  // namespace plist

}  // namespace cv
