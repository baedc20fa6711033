#pragma once

// What the readers of both forms share.

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/PropertyList/PropertyList.h"

namespace cv::plist {

/// Ends reading: what is wrong with the bytes. Thrown by value, and caught by parse().
struct Refusal {
    Parsed::Verdict verdict;
    std::string reason;
};

[[noreturn]] void refuseMalformed(const char* reason);
[[noreturn]] void refuseUnsupported(const char* reason);

/// What the tree of one file may hold. A file of a few megabytes can describe a tree that fits in no memory, because it
/// may refer to one object many times. So every block is accounted for before it is allocated. Each function refuses
/// the file when it would need more.
class Budget {
public:
    /// Accounts for one more value.
    void addValue();

    /// Accounts for a block of `size` bytes from malloc, and what malloc itself takes for it; none when `size` is 0.
    void spend(std::size_t size);

    /// Accounts for a text or data of `size` bytes that is made in this size.
    void addBytes(std::size_t size) { spend(blockFor<std::string>(size)); }

    /// Makes room for `count` more items in an array or bytes in a string, which grow by doubling.
    template <typename Container>
    void makeRoom(Container& container, std::size_t count) {
        const std::size_t before = container.capacity();
        const std::size_t wanted = container.size() + count;
        if (wanted > before) {
            const std::size_t after = wanted < 2 * before ? 2 * before : wanted;
            spend(blockFor<Container>(after));
            container.reserve(after);
            giveBack(blockFor<Container>(before));
        }
    }

    /// Puts the value into the dictionary, accounts for its key and its node, and refuses a key that is there already.
    void addEntry(Dictionary& dictionary, std::string&& key, Value&& value);

private:
    /// The size of the block in which an array or a string keeps `capacity` items or bytes; short strings need none.
    template <typename Container>
    static std::size_t blockFor(std::size_t capacity) {
        return capacity > Container().capacity() ? capacity * sizeof(typename Container::value_type) + 1 : 0;
    }

    void giveBack(std::size_t size);

    static constexpr std::size_t MAX_TREE_SIZE = 192U << 20;
    static constexpr std::size_t MAX_VALUES = 1U << 19;

    std::size_t left_ = MAX_TREE_SIZE;
    std::size_t values_ = 0;
};

/// Reads a binary property list ("bplist00"), given whole. Throws Refusal and std::bad_alloc.
Value readBinary(std::string_view bytes);

/// Reads an XML property list, given whole. Throws Refusal and std::bad_alloc.
Value readXml(std::string_view bytes);

}  // namespace cv::plist
