#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

/// \file
/// Numbers as streams store them. Nothing here asks for the processor's own byte order: bytes are put together and
/// taken apart by their weight, which compilers turn into one move, with a swap where it takes one.

namespace Util::Detail {

/// The number of bytes of a stored T: `long` has 32 bits in a stream, whatever the processor gives it.
template <typename T>
constexpr std::size_t STORED_WIDTH = std::is_same_v<T, long> || std::is_same_v<T, unsigned long> ? 4 : sizeof(T);

template <std::size_t width>
using UnsignedOfWidth = std::conditional_t<
    width == 1, std::uint8_t,
    std::conditional_t<width == 2, std::uint16_t, std::conditional_t<width == 4, std::uint32_t, std::uint64_t>>>;

/// The bits of a stored T, as a number.
template <typename T>
using StoredBits = UnsignedOfWidth<STORED_WIDTH<T>>;

template <typename T>
inline StoredBits<T> bitsOf(const T& value) {
    if constexpr (std::is_floating_point_v<T>) {
        StoredBits<T> bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    } else {
        return static_cast<StoredBits<T>>(value);
    }
}

/// Sets `value` to what has these bits. It is not returned, since the x87 registers, which return floating values on
/// 32-bit Intel, make quiet NaNs of signalling ones.
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

template <typename Bits, std::size_t... i>
inline void storeBytes(Bits bits, unsigned char* dest, bool bigEndian, std::index_sequence<i...>) {
    if (bigEndian) {
        ((dest[sizeof...(i) - 1 - i] = static_cast<unsigned char>(bits >> (8 * i))), ...);
    } else {
        ((dest[i] = static_cast<unsigned char>(bits >> (8 * i))), ...);
    }
}

template <typename Bits, std::size_t... i>
inline Bits loadBytes(const unsigned char* src, bool bigEndian, std::index_sequence<i...>) {
    if (bigEndian) {
        return static_cast<Bits>((... | (static_cast<Bits>(src[sizeof...(i) - 1 - i]) << (8 * i))));
    }
    return static_cast<Bits>((... | (static_cast<Bits>(src[i]) << (8 * i))));
}

/// Stores the bytes of `bits` at `dest`.
template <typename Bits>
inline void store(Bits bits, unsigned char* dest, bool bigEndian) {
    storeBytes(bits, dest, bigEndian, std::make_index_sequence<sizeof(Bits)>());
}

/// The number whose bytes are at `src`.
template <typename Bits>
inline Bits load(const unsigned char* src, bool bigEndian) {
    return loadBytes<Bits>(src, bigEndian, std::make_index_sequence<sizeof(Bits)>());
}

}  // namespace Util::Detail
