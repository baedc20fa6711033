#pragma once

// The objects that property lists hold and that the project asks nothing of.

#include <string>
#include <utility>

#include "platform/CoreFoundation/Object.h"

namespace cv {

extern const objc_class DATE_CLASS;
extern const objc_class DATA_CLASS;

struct DateObject : objc_object {
    explicit DateObject(double secondsSince2001) : objc_object(DATE_CLASS), seconds(secondsSince2001) {}
    bool operator==(const DateObject& other) const noexcept { return seconds == other.seconds; }
    CFHashCode hash() const noexcept { return std::hash<double>()(seconds); }

    const double seconds;
};

struct DataObject : objc_object {
    explicit DataObject(std::string content) : objc_object(DATA_CLASS), bytes(std::move(content)) {}
    bool operator==(const DataObject& other) const noexcept { return bytes == other.bytes; }
    CFHashCode hash() const noexcept { return std::hash<std::string>()(bytes); }

    const std::string bytes;
};

}  // namespace cv
