#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

/// \file
/// Numbers as streams store them. Only ByteStream.h includes this. The format is DataStream's: two's complement and
/// IEEE 754, 1 to 8 bytes, in either byte order.
///
/// A number on its way to a stream first becomes an unsigned one with the same bits (bitsOf), which is then stored byte
/// by byte (store). Reading goes the other way: load, then setFromBits. Nothing here depends on the processor's own
/// byte order: shifts pick the bytes out by their weight. Compilers turn the shifts into one move, with a byte swap
/// where the orders differ.
///
/// Nothing here checks a bound or fails: `src` and `dest` must have as many bytes as the number.

namespace Util::Detail {

/// The number of bytes of a stored T: `long` has 32 bits in a stream, whatever the processor gives it.
template <typename T>
constexpr std::size_t STORED_WIDTH = std::is_same_v<T, long> || std::is_same_v<T, unsigned long> ? 4 : sizeof(T);

/// The unsigned type of 1, 2, 4 or 8 bytes.
template <std::size_t width>
using UnsignedOfWidth = std::conditional_t<
    width == 1, std::uint8_t,
    std::conditional_t<width == 2, std::uint16_t, std::conditional_t<width == 4, std::uint32_t, std::uint64_t>>>;

/// The unsigned type that has as many bits as a stored T.
template <typename T>
using StoredBits = UnsignedOfWidth<STORED_WIDTH<T>>;

/// The bits of `value` as it is stored. A `long` of 64 bits loses its upper half.
template <typename T>
[[nodiscard]] inline StoredBits<T> bitsOf(const T& value) {
    if constexpr (std::is_floating_point_v<T>) {
        StoredBits<T> bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    } else {
        return static_cast<StoredBits<T>>(value);
    }
}

/// Sets `value` to what has these bits. The value is not returned, because 32-bit Intel returns floating values in x87
/// registers, which turn a signalling NaN into a quiet one.
template <typename T>
inline void setFromBits(T& value, StoredBits<T> bits) {
    if constexpr (std::is_floating_point_v<T>) {
        std::memcpy(&value, &bits, sizeof value);
    } else if constexpr (std::is_signed_v<T>) {
        value = static_cast<T>(static_cast<std::make_signed_t<StoredBits<T>>>(bits));
    } else {
        value = static_cast<T>(bits);
    }
}

/// As store(); `i` counts the bytes, so that no loop is left in the code.
template <typename Bits, std::size_t... i>
inline void storeBytes(Bits bits, unsigned char* dest, bool bigEndian, std::index_sequence<i...>) {
    if (bigEndian) {
        ((dest[sizeof...(i) - 1 - i] = static_cast<unsigned char>(bits >> (8 * i))), ...);
    } else {
        ((dest[i] = static_cast<unsigned char>(bits >> (8 * i))), ...);
    }
}

/// As load(), in the same way.
template <typename Bits, std::size_t... i>
[[nodiscard]] inline Bits loadBytes(const unsigned char* src, bool bigEndian, std::index_sequence<i...>) {
    if (bigEndian) {
        return static_cast<Bits>((... | (static_cast<Bits>(src[sizeof...(i) - 1 - i]) << (8 * i))));
    }
    return static_cast<Bits>((... | (static_cast<Bits>(src[i]) << (8 * i))));
}

/// Stores the bytes of `bits` at `dest`, the most significant one first when `bigEndian`, else last.
template <typename Bits>
inline void store(Bits bits, unsigned char* dest, bool bigEndian) {
    storeBytes(bits, dest, bigEndian, std::make_index_sequence<sizeof(Bits)>());
}

/// The number whose bytes are at `src`, the most significant one first when `bigEndian`, else last.
template <typename Bits>
[[nodiscard]] inline Bits load(const unsigned char* src, bool bigEndian) {
    return loadBytes<Bits>(src, bigEndian, std::make_index_sequence<sizeof(Bits)>());
}

}  // namespace Util::Detail
