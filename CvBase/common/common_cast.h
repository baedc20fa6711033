#pragma once

#include <limits>
#include <type_traits>

#include "CvBase/common/common_checked_types.h"

/// Whether the integer type To can hold `value`, whatever the signs and widths of the two types.
template <typename To, typename From>
constexpr bool in_range(From value) {
    static_assert(std::is_integral_v<To> && std::is_integral_v<From>, "in_range compares integers");
    constexpr To lowest = std::numeric_limits<To>::min();
    constexpr To highest = std::numeric_limits<To>::max();
    if constexpr (std::is_signed_v<To> == std::is_signed_v<From>) {
        return value >= lowest && value <= highest;
    } else if constexpr (std::is_signed_v<From>) {
        return value >= 0 && static_cast<std::make_unsigned_t<From>>(value) <= highest;
    } else {
        return value <= static_cast<std::make_unsigned_t<To>>(highest);
    }
}

/// `value` as a To; unset when To cannot hold it.
template <typename To, typename From>
constexpr checked_value<To> checked_cast(From value) {
    return in_range<To>(value) ? checked_value<To>(static_cast<To>(value)) : checked_value<To>();
}
