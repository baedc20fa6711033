#include <CoreFoundation/CFDictionary.h>

#include <algorithm>

#include "platform/CoreFoundation/Collections.h"

const objc_class cv::DICTIONARY_CLASS("NSDictionary", OBJECT_METACLASS, &OBJECT_CLASS, nullptr,
                                      valueOf<__CFDictionary>());

bool __CFDictionary::operator==(const __CFDictionary& other) const {
    const auto isIn = [&other](const Entries::value_type& entry) {
        const auto found = other.entries.find(entry.first);
        return found != other.entries.end() && CFEqual(found->second.get(), entry.second.get());
    };
    return entries.size() == other.entries.size() && std::all_of(entries.begin(), entries.end(), isIn);
}

CFTypeID CFDictionaryGetTypeID() {
    return cv::typeID(cv::DICTIONARY_CLASS);
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    if (key == nullptr) {
        return nullptr;
    }
    const auto found = dictionary->entries.find(cv::retained(cv::object(key)));
    return found != dictionary->entries.end() ? found->second.get() : nullptr;
}
