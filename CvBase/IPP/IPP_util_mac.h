#pragma once

#include <cstddef>
#include <cstring>

#pragma GCC visibility push(default)

/// Element-wise routines over arrays: sample format conversion, copying, moving, filling, zeroing and comparing.
///
/// Every routine takes the number of elements (not bytes) first. Convert, Copy and Move then take the source and the
/// destination, Zero the destination, Set the destination and the value, Equal the two areas. None allocates, none
/// reports an error, and a count of 0 does nothing and reads no pointer, so that the pointers may then be null.
/// Pointers must be aligned for their elements; on Intel processors they need no alignment. Any thread may call them;
/// the first call chooses the processor's widest instructions.
///
/// The bits stored do not depend on the processor's vector instructions: each routine stores what its
/// element-by-element loop stores, in single precision where it says float, with a multiplication and an addition
/// rounded one after the other.
///
/// A conversion may work in place (`src` and `dst` the same memory) if an element of the destination is no larger than
/// one of the source. Other overlaps are allowed by Move alone.
namespace IPP {

/// @name Integer to floating point
/// @{

/// `dst[i] = src[i] * multiplier`. From 16 bits the multiplier is 1 / (the 32-bit integer 1 shifted left by `scale` mod
/// 32): 15 maps the full scale of the samples to ±1.0. The shift by 31 (`scale` 31 or -1) gives a negative integer, and
/// so a multiplier of -1 / 2^31. From 32 bits the multiplier is 2^-scale, for every scale: 31 maps the full scale to
/// ±1.0. Where 2^-scale has no finite value in the destination's type it is infinite or 0, and zero times infinity
/// gives the quiet NaN with the sign bit set. Bytes become 0.0 to 255.0.
void Convert(unsigned int n, const unsigned char* src, float* dst);
void Convert(unsigned int n, const short* src, float* dst, int scale);
void Convert(unsigned int n, const short* src, double* dst, int scale);
void Convert(unsigned int n, const int* src, float* dst, int scale);
void Convert(unsigned int n, const int* src, double* dst, int scale);
/// @}

/// Float to 16 bits. The multiplier is the 32-bit integer 1 shifted left by (-scale) mod 32: -15 maps ±1.0 to the full
/// scale of the samples. A positive scale does not divide; 1 gives the shift 31 and so a multiplier of -2^31.
///
/// With `round` false the product is truncated toward zero; with `round` true 0.5 is added to it first, or -0.5 where
/// the *input* is negative. The result is clamped to -32768 .. 32767, but a NaN, and any value outside the range of 32
/// bits, even a positive one, gives -32768.
void Convert(unsigned int n, const float* src, short* dst, int scale, bool round);

/// Float to 32 bits. The multiplier is 2^-scale: -31 maps ±1.0 to the full scale of the samples.
///
/// Unless `scale` is 0, inputs above 1.0 and below -1.0 are taken as 1.0 and -1.0. With `round` false the product is
/// truncated toward zero; with `round` true 0.5 is added to it first, or -0.5 where the *product* is negative. A NaN,
/// and any value outside the range of 32 bits, even a positive one, gives -2147483648; with `scale` -31 so does an
/// input of 1.0.
void Convert(unsigned int n, const float* src, int* dst, int scale, bool round);

/// Does nothing: no conversion from float to bytes is defined. The destination stays as it is.
void Convert(unsigned int n, const float* src, unsigned char* dst, int scale, bool round);

/// Does nothing: no conversion from double to 32 bits is defined. The destination stays as it is.
void Convert(unsigned int n, const double* src, int* dst, int scale, bool round);

/// Float to double: every value is kept.
void Convert(unsigned int n, const float* src, double* dst);

/// Double to float, rounded to nearest; a value too large for a float becomes infinite.
void Convert(unsigned int n, const double* src, float* dst);

namespace Detail {

/// What Copy does, for every type of element.
template <typename T>
inline void copy(unsigned int n, const T* src, T* dst) {
    if (n != 0) {
        std::memcpy(dst, src, std::size_t{n} * sizeof(T));
    }
}

/// What Move does.
template <typename T>
inline void move(unsigned int n, const T* src, T* dst) {
    if (n != 0) {
        std::memmove(dst, src, std::size_t{n} * sizeof(T));
    }
}

/// What Zero does.
template <typename T>
inline void zero(unsigned int n, T* dst) {
    if (n != 0) {
        std::memset(dst, 0, std::size_t{n} * sizeof(T));
    }
}

}  // namespace Detail

/// @name Copying
/// @{

/// Copies `n` elements byte for byte. The two areas must not overlap.
inline void Copy(unsigned int n, const unsigned char* src, unsigned char* dst) {
    Detail::copy(n, src, dst);
}
inline void Copy(unsigned int n, const char* src, char* dst) {
    Detail::copy(n, src, dst);
}
inline void Copy(unsigned int n, const short* src, short* dst) {
    Detail::copy(n, src, dst);
}
inline void Copy(unsigned int n, const int* src, int* dst) {
    Detail::copy(n, src, dst);
}
inline void Copy(unsigned int n, const unsigned int* src, unsigned int* dst) {
    Detail::copy(n, src, dst);
}
inline void Copy(unsigned int n, const float* src, float* dst) {
    Detail::copy(n, src, dst);
}
inline void Copy(unsigned int n, const double* src, double* dst) {
    Detail::copy(n, src, dst);
}
/// @}

/// @name Moving
/// @{

/// Copies `n` elements byte for byte. The two areas may overlap.
inline void Move(unsigned int n, const unsigned char* src, unsigned char* dst) {
    Detail::move(n, src, dst);
}
inline void Move(unsigned int n, const short* src, short* dst) {
    Detail::move(n, src, dst);
}
inline void Move(unsigned int n, const unsigned int* src, unsigned int* dst) {
    Detail::move(n, src, dst);
}
inline void Move(unsigned int n, const float* src, float* dst) {
    Detail::move(n, src, dst);
}
inline void Move(unsigned int n, const double* src, double* dst) {
    Detail::move(n, src, dst);
}
/// @}

/// @name Zeroing
/// @{

/// Stores all-zero bytes over `n` elements.
inline void Zero(unsigned int n, unsigned char* dst) {
    Detail::zero(n, dst);
}
inline void Zero(unsigned int n, short* dst) {
    Detail::zero(n, dst);
}
inline void Zero(unsigned int n, int* dst) {
    Detail::zero(n, dst);
}
inline void Zero(unsigned int n, unsigned int* dst) {
    Detail::zero(n, dst);
}
inline void Zero(unsigned int n, float* dst) {
    Detail::zero(n, dst);
}
inline void Zero(unsigned int n, double* dst) {
    Detail::zero(n, dst);
}
/// @}

/// @name Filling
/// @{

/// Stores `value` into each of `n` elements. A value that compares equal to zero is stored as all-zero bytes: -0.0
/// becomes +0.0. A NaN is stored with the bits it has.
inline void Set(unsigned int n, unsigned char* dst, unsigned char value) {
    if (n != 0) {
        std::memset(dst, value, n);
    }
}
void Set(unsigned int n, short* dst, short value);
void Set(unsigned int n, int* dst, int value);
void Set(unsigned int n, unsigned int* dst, unsigned int value);
void Set(unsigned int n, float* dst, float value);
void Set(unsigned int n, double* dst, double value);
/// @}

/// Whether the first `n` bytes of `a` and `b` agree: true for an `n` of 0, whatever the pointers.
[[nodiscard]] bool Equal(unsigned int n, const unsigned char* a, const unsigned char* b);

}  // namespace IPP

#pragma GCC visibility pop
