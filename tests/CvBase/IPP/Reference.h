#pragma once

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "CvBase/IPP/IPP_util_mac.h"

/// The conversions as plain loops, in the order in which their rules are told and with no regard for speed; and a list
/// that lets a test run all of them.
namespace test::reference {

inline int truncated(float x) {
    double const value = x;
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(x) : INT_MIN;
}

inline int shiftedOne(int bits) {
    int const shift = (bits % 32 + 32) % 32;
    return shift == 31 ? INT_MIN : 1 << shift;
}

inline float signedHalf(float x) {
    return 0.0F <= x ? 0.5F : -0.5F;
}

template <typename T>
T powerOfTwo(int exponent) {
    return static_cast<T>(std::pow(2.0, exponent));
}

inline short floatToShort(float x, int scale, bool round) {
    auto const m = static_cast<float>(shiftedOne(scale == INT_MIN ? 0 : -scale));
    int const v = truncated(round ? x * m + signedHalf(x) : x * m);
    return static_cast<short>(v > 32767 ? 32767 : v < -32768 ? -32768 : v);
}

inline int floatToInt(float x, int scale, bool round) {
    if (scale == 0) {
        return truncated(round ? x + signedHalf(x) : x);
    }
    float const f = scale == INT_MIN ? powerOfTwo<float>(INT_MAX) : powerOfTwo<float>(-scale);
    if (x >= 1.0F) {
        return truncated(round ? f + signedHalf(f) : f);
    }
    if (x <= -1.0F) {
        return truncated(round ? -f + signedHalf(-f) : -f);
    }
    float const product = x * f;
    return truncated(round ? product + signedHalf(product) : product);
}

template <typename T>
T shortToFloating(short x, int scale) {
    return static_cast<T>(x) * (T{1} / static_cast<T>(shiftedOne(scale)));
}

template <typename T>
T intToFloating(int x, int scale) {
    if (scale == 0) {
        return static_cast<T>(x);
    }
    double const m = scale == INT_MIN ? powerOfTwo<double>(INT_MAX) : powerOfTwo<double>(-scale);
    return static_cast<T>(x) * static_cast<T>(m);
}

/// What the source elements of a conversion are, for making inputs.
enum class Kind { BYTE, SHORT, INT, FLOAT, DOUBLE };

/// A conversion with its scale and rounding chosen, beside the plain loop that it must equal bit for bit.
struct Conversion {
    std::string name;
    Kind source;
    std::size_t sourceSize;
    std::size_t resultSize;
    std::function<void(std::size_t n, void const* src, void* dst)> convert;
    std::function<void(std::size_t n, void const* src, void* dst)> expect;
};

template <typename From, typename To, typename Convert, typename Element>
Conversion makeConversion(std::string name, Kind source, Convert convert, Element element) {
    return {std::move(name),
            source,
            sizeof(From),
            sizeof(To),
            [convert](std::size_t n, void const* src, void* dst) {
                convert(static_cast<unsigned int>(n), static_cast<From const*>(src), static_cast<To*>(dst));
            },
            [element](std::size_t n, void const* src, void* dst) {
                for (std::size_t i = 0; i < n; ++i) {
                    From x;
                    std::memcpy(&x, static_cast<char const*>(src) + i * sizeof x, sizeof x);
                    To const result = element(x);
                    std::memcpy(static_cast<char*>(dst) + i * sizeof result, &result, sizeof result);
                }
            }};
}

template <typename From, typename To>
Conversion makePlain(std::string name, Kind source) {
    return makeConversion<From, To>(
        std::move(name), source, [](unsigned int n, From const* src, To* dst) { IPP::Convert(n, src, dst); },
        [](From x) { return static_cast<To>(x); });
}

template <typename From, typename To>
Conversion makeScaled(std::string name, Kind source, int scale, To (*element)(From, int)) {
    return makeConversion<From, To>(
        std::move(name) + ", scale " + std::to_string(scale), source,
        [scale](unsigned int n, From const* src, To* dst) { IPP::Convert(n, src, dst, scale); },
        [scale, element](From x) { return element(x, scale); });
}

template <typename To>
Conversion makeRounded(std::string name, int scale, bool round, To (*element)(float, int, bool)) {
    return makeConversion<float, To>(
        std::move(name) + ", scale " + std::to_string(scale) + (round ? ", rounded" : ", truncated"), Kind::FLOAT,
        [scale, round](unsigned int n, float const* src, To* dst) { IPP::Convert(n, src, dst, scale, round); },
        [scale, round, element](float x) { return element(x, scale, round); });
}

/// Every conversion that has no scale, and every other one at each of `scales`, rounded and truncated.
inline std::vector<Conversion> conversions(std::vector<int> const& scales) {
    std::vector<Conversion> all = {
        makePlain<unsigned char, float>("byte to float", Kind::BYTE),
        makePlain<float, double>("float to double", Kind::FLOAT),
        makePlain<double, float>("double to float", Kind::DOUBLE),
    };
    for (int const scale : scales) {
        all.push_back(makeScaled("short to float", Kind::SHORT, scale, shortToFloating<float>));
        all.push_back(makeScaled("short to double", Kind::SHORT, scale, shortToFloating<double>));
        all.push_back(makeScaled("int to float", Kind::INT, scale, intToFloating<float>));
        all.push_back(makeScaled("int to double", Kind::INT, scale, intToFloating<double>));
        for (bool const round : {false, true}) {
            all.push_back(makeRounded("float to short", scale, round, floatToShort));
            all.push_back(makeRounded("float to int", scale, round, floatToInt));
        }
    }
    return all;
}

}  // namespace test::reference
