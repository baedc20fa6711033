#pragma once

#include "CvBase/IPP/IPP_util_mac.h"
#include "tests/support/Test.h"

/// The conversions as plain loops, in the order in which their rules are told and with no regard for speed; values to
/// convert; and a list that lets a test run all of them.
namespace test::reference {

using Bytes = std::vector<unsigned char>;

inline int truncated(float x) {
    const double value = x;
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(x) : INT_MIN;
}

inline int shiftedOne(int bits) {
    const int shift = (bits % 32 + 32) % 32;
    return shift == 31 ? INT_MIN : 1 << shift;
}

inline float withHalf(float x, bool round) {
    return !round ? x : 0.0F <= x ? x + 0.5F : x - 0.5F;
}

inline double twoToMinus(int scale) {
    return std::pow(2.0, scale == INT_MIN ? INT_MAX : -scale);
}

inline short floatToShort(float x, int scale, bool round) {
    const auto m = static_cast<float>(shiftedOne(scale == INT_MIN ? 0 : -scale));
    const float sum = !round ? x * m : 0.0F <= x ? x * m + 0.5F : x * m - 0.5F;
    return static_cast<short>(std::clamp(truncated(sum), -32768, 32767));
}

inline int floatToInt(float x, int scale, bool round) {
    const auto f = static_cast<float>(twoToMinus(scale));
    if (scale == 0) {
        return truncated(withHalf(x, round));
    }
    return truncated(withHalf(x >= 1.0F ? f : x <= -1.0F ? -f : x * f, round));
}

template <typename T>
T shortToFloating(short x, int scale) {
    return static_cast<T>(x) * (T{1} / static_cast<T>(shiftedOne(scale)));
}

template <typename T>
T intToFloating(int x, int scale) {
    const T product = scale == 0 ? static_cast<T>(x) : static_cast<T>(x) * static_cast<T>(twoToMinus(scale));
    return std::isnan(product) ? -std::numeric_limits<T>::quiet_NaN() : product;  // the NaN of Intel's processors
}

template <typename From, typename To>
To unscaled(From x) {
    return static_cast<To>(x);
}

template <typename T>
T bitsAs(std::uint64_t bits) {
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template <typename T>
Bytes asBytes(const std::vector<T>& values) {
    const auto* const begin = reinterpret_cast<const unsigned char*>(values.data());
    return Bytes(begin, begin + values.size() * sizeof(T));
}

/// Values of any bits; numbers, three times in four, of any magnitude that the conversions tell apart.
template <typename T>
Bytes randomInput(std::size_t n) {
    std::mt19937_64 random(20070612);
    std::vector<T> values(n);
    for (T& value : values) {
        const std::uint64_t bits = random();
        value = bitsAs<T>(random());
        if (std::is_floating_point_v<T> && bits % 4 != 0) {
            const double fraction = static_cast<std::int32_t>(bits >> 32) / 2147483648.0;
            value = static_cast<T>(std::ldexp(fraction, static_cast<int>(bits / 4 % 72) - 36));
        }
    }
    return asBytes(values);
}

/// Integers near the limits and where float loses the last bits.
template <typename T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
Bytes specialInput() {
    const T least = std::numeric_limits<T>::min(), greatest = std::numeric_limits<T>::max();
    return asBytes(std::vector<T>{0, 1, 2, 127, T(128), T(255), T(-1), T(-2), T(16777217), T(33554431), T(-16777219),
                                  least, T(least + 1), T(greatest - 1), greatest, T(greatest / 2), T(greatest - 63),
                                  T(greatest - 64)});
}

/// Both signs of the values at which a conversion changes its mind, with their neighbours, and NaNs of every sort.
template <typename T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
Bytes specialInput() {
    using Float = std::numeric_limits<float>;
    const T infinity = std::numeric_limits<T>::infinity();
    std::vector<T> values;
    // clang-format off
    const double turns[] = {
        0.0, 0.25, 0.5, 1.0, 1.5, 2.0, 2.5, 32767.0, 32767.5, 32768.0, 65535.0, 65536.0, 4194304.0, 8388608.0,
        8388609.0, 16777216.0, 0x1p31, 0x1p32, 0x1p-16, 0x1p-32, 0x1p-31, 0x3p-32, infinity,
        std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), Float::min(), Float::max(), Float::denorm_min()};
    // clang-format on
    for (const double turn : turns) {
        const auto exact = static_cast<T>(turn);
        for (const T value : {exact, std::nextafter(exact, T(0)), std::nextafter(exact, infinity)}) {
            values.insert(values.end(), {value, -value});
        }
    }
    for (const std::uint64_t bits : {0x7FC0000000000001U, 0xFFC0000000000001U, 0x7F80000100000001U, 0xFF81234500000001U,
                                     0x7FF8000000000000U, 0xFFF0000000000001U, 0x7FF0000020000000U}) {
        values.push_back(bitsAs<T>(sizeof(T) == sizeof bits ? bits : bits >> 32));
    }
    return asBytes(values);
}

/// A conversion with its scale and rounding chosen, beside the plain loop that it must equal bit for bit.
struct Conversion {
    std::string name;
    std::size_t sourceSize;
    std::size_t resultSize;
    Bytes (*randomInput)(std::size_t n);
    Bytes (*specialInput)();
    std::function<void(std::size_t n, const void* src, void* dst)> convert;
    std::function<void(std::size_t n, const void* src, void* dst)> expect;
};

/// The conversion with these further arguments, whose plain loop applies `element`.
template <typename From, typename To, typename... Arguments>
Conversion make(std::string name, To (*element)(From, Arguments...), Arguments... arguments) {
    ((name += ", " + std::to_string(arguments)), ...);
    return {name,
            sizeof(From),
            sizeof(To),
            randomInput<From>,
            specialInput<From>,
            [=](std::size_t n, const void* src, void* dst) {
                IPP::Convert(static_cast<unsigned int>(n), static_cast<const From*>(src), static_cast<To*>(dst),
                             arguments...);
            },
            [=](std::size_t n, const void* src, void* dst) {
                for (std::size_t i = 0; i < n; ++i) {
                    From x;
                    std::memcpy(&x, static_cast<const char*>(src) + i * sizeof x, sizeof x);
                    const To result = element(x, arguments...);
                    std::memcpy(static_cast<char*>(dst) + i * sizeof result, &result, sizeof result);
                }
            }};
}

/// Every conversion that has no scale, and every other one at each of `scales`, rounded and truncated.
inline std::vector<Conversion> conversions(const std::vector<int>& scales) {
    std::vector<Conversion> all = {make("byte to float", unscaled<unsigned char, float>),
                                   make("float to double", unscaled<float, double>),
                                   make("double to float", unscaled<double, float>)};
    for (const int scale : scales) {
        all.insert(all.end(), {make("short to float", shortToFloating<float>, scale),
                               make("short to double", shortToFloating<double>, scale),
                               make("int to float", intToFloating<float>, scale),
                               make("int to double", intToFloating<double>, scale)});
        for (const bool round : {false, true}) {
            all.push_back(make("float to short", floatToShort, scale, round));
            all.push_back(make("float to int", floatToInt, scale, round));
        }
    }
    return all;
}

}  // namespace test::reference
