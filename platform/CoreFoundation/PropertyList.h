#pragma once

#include <plist/plist.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace cv::plist {

struct FreeNode {
    void operator()(void* node) const { plist_free(node); }
};

/// A property list's tree that is not part of another tree.
using Tree = std::unique_ptr<void, FreeNode>;

/// The largest file that is read, in bytes, and the deepest nesting of arrays and dictionaries.
constexpr std::size_t MAX_FILE_SIZE = 64U << 20;
constexpr unsigned MAX_DEPTH = 512;

/// What reading gave.
struct Parsed {
    enum class Fault {
        none,
        malformed,   ///< the bytes are no property list
        unsupported  ///< they are one, but it holds what a tree cannot carry without loss, or is too large
    };
    Tree root;  ///< null unless `fault` is none
    Fault fault = Fault::none;
    std::string reason;  ///< what is wrong, to end a sentence with
};

/// Reads a binary or an XML property list. Safe for any bytes: they may come from a damaged or hostile file.
Parsed parse(std::string_view bytes);

/// The binary form of the tree.
std::string toBinary(plist_t root);

/// An integer of a property list: its 64 bits, and whether they are those of a negative number.
struct Integer {
    unsigned long long bits;
    bool negative;
};

/// A tree with one integer. (libplist's own function turns integers above 2^63 - 1 into negative ones.)
Tree makeInteger(Integer value);

/// A tree with one date, in seconds since 1 January 2001 UTC. (libplist's own function takes 32 bits of seconds.)
Tree makeDate(double seconds);

/// The value of an integer node.
Integer integerOf(plist_t node);

/// The value of a date node, in seconds since 1 January 2001 UTC.
double dateOf(plist_t node);

}  // namespace cv::plist
