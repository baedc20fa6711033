#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#include <unordered_map>
#include <vector>

#include "platform/CoreFoundation/Object.h"

namespace cv {

extern const objc_class ARRAY_CLASS;
extern const objc_class DICTIONARY_CLASS;

struct HashObject {
    std::size_t operator()(const Owned<objc_object>& object) const { return CFHash(object.get()); }
};

struct EqualObjects {
    bool operator()(const Owned<objc_object>& a, const Owned<objc_object>& b) const {
        return CFEqual(a.get(), b.get());
    }
};

}  // namespace cv

/// Filled before it is handed out, and not changed afterwards.
struct __CFArray : objc_object {
    using Items = std::vector<cv::Owned<objc_object>>;

    explicit __CFArray(Items&& values) : objc_object(cv::ARRAY_CLASS), items(std::move(values)) {}
    bool operator==(const __CFArray& other) const;
    CFHashCode hash() const noexcept { return items.size(); }

    const Items items;
};

/// Filled before it is handed out, and not changed afterwards.
struct __CFDictionary : objc_object {
    using Entries =
        std::unordered_map<cv::Owned<objc_object>, cv::Owned<objc_object>, cv::HashObject, cv::EqualObjects>;

    explicit __CFDictionary(Entries&& values) : objc_object(cv::DICTIONARY_CLASS), entries(std::move(values)) {}
    bool operator==(const __CFDictionary& other) const;
    CFHashCode hash() const noexcept { return entries.size(); }

    const Entries entries;
};
