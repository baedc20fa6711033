#pragma once

// What a descriptor's opaque storage holds.

#include <Carbon/AppleEvents.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace cv {
struct AppleEventParameter;
}

/// Bytes, for a simple descriptor; parameters by keyword, for an event or an object specifier.
struct OpaqueAEDataStorage {
    std::vector<UInt8> bytes;
    std::vector<cv::AppleEventParameter> parameters;
    AEEventClass eventClass = 0;
    AEEventID eventID = 0;
    std::vector<cv::AppleEventParameter> target;  // one, in an event
};

namespace cv {

struct AppleEventParameter {
    AEKeyword keyword;
    DescType type;
    OpaqueAEDataStorage data;

    /// The bytes as a `Value`, when they are of this type and of its size.
    template <typename Value>
    std::optional<Value> as(DescType wantedType) const {
        Value value;
        if (type != wantedType || data.bytes.size() != sizeof value) {
            return std::nullopt;
        }
        std::memcpy(&value, data.bytes.data(), sizeof value);
        return value;
    }
};

/// The parameter `keyword` of an event or an object specifier, or null.
inline const AppleEventParameter* findParameter(const OpaqueAEDataStorage& record, AEKeyword keyword) {
    const auto found = std::find_if(record.parameters.begin(), record.parameters.end(),
                                    [&](const AppleEventParameter& item) { return item.keyword == keyword; });
    return found == record.parameters.end() ? nullptr : &*found;
}

}  // namespace cv
