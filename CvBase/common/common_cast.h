#pragma once

#include <limits>
#include <type_traits>

#include "CvBase/common/common_checked_types.h"

/// \file
/// Conversions between integers that say whether the number survives.
///
///     const checked_value<std::uint16_t> port = checked_cast<std::uint16_t>(number);
///     if (!port.IsSet()) {
///         return "There is no such port";  // negative, or above 65535
///     }
///
/// They take any two integer types, whatever their signs and widths, and do not compile for others. They throw nothing
/// and can be evaluated by the compiler.

/// Whether the integer type To can hold `value`: whether a To can equal it as a number. No unsigned type can hold -1,
/// although a plain conversion would give a value.
template <typename To, typename From>
[[nodiscard]] constexpr bool in_range(From value) {
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

/// `value` as a To; unset when To cannot hold it. checked_cast<To>(value).ValueOr(x) gives x in that case.
template <typename To, typename From>
[[nodiscard]] constexpr checked_value<To> checked_cast(From value) {
    return in_range<To>(value) ? checked_value<To>(static_cast<To>(value)) : checked_value<To>();
}
