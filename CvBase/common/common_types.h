#pragma once

#include <cstddef>
#include <cstdint>

// The integer names with a fixed width, without a namespace.
using std::int16_t;
using std::int32_t;
using std::int64_t;
using std::int8_t;
using std::size_t;
using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

/// An empty base class that takes copying away; derive from it privately in a class that owns a resource of the
/// platform.
class noncopyable {
public:
    noncopyable(const noncopyable&) = delete;
    noncopyable& operator=(const noncopyable&) = delete;

protected:
    noncopyable() = default;
    ~noncopyable() = default;
};
