#pragma once

#include <cstddef>
#include <cstdint>

/// \file
/// Names that the whole library uses.

/// The integer names with a fixed width, without a namespace.
using std::int16_t;
using std::int32_t;
using std::int64_t;
using std::int8_t;
using std::size_t;
using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

/// An empty base class that makes a class non-copyable. Derive from it privately in a class that owns a resource of the
/// platform, such as an open file:
///
///     class Lock : private noncopyable { ... };
class noncopyable {
public:
    /// A class derived from this can be neither copied nor moved.
    noncopyable(const noncopyable&) = delete;
    noncopyable& operator=(const noncopyable&) = delete;

protected:
    noncopyable() = default;
    ~noncopyable() = default;
};
