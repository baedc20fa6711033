#include "CvBase/Util/Folder/NameList.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Util {

namespace {

struct Item {
    std::uint64_t key = 0;  ///< the eight bytes after what all names begin with, the first one in the highest place
    const char* text = nullptr;
    const String* existing = nullptr;  ///< the String that holds the text already, if any
};

/// How many bytes all texts begin with in common.
std::size_t commonLength(const std::vector<Item>& items) {
    std::size_t length = items.empty() ? 0 : std::strlen(items.front().text);
    for (const Item& item : items) {
        const char* first = items.front().text;
        length = static_cast<std::size_t>(std::mismatch(first, first + length, item.text).first - first);
    }
    return length;
}

/// The eight bytes at `text`, with zeros after its end.
std::uint64_t keyOf(const char* text) {
    std::uint64_t key = 0;
    for (int shift = 56; shift >= 0 && *text != '\0'; shift -= 8) {
        key |= std::uint64_t{static_cast<unsigned char>(*text++)} << shift;
    }
    return key;
}

void sort(std::vector<Item>& items) {
    const std::size_t common = commonLength(items);
    for (Item& item : items) {
        item.key = keyOf(item.text + common);
    }
    const std::size_t compared = common + sizeof(Item::key);
    std::sort(items.begin(), items.end(), [compared](const Item& a, const Item& b) {
        if (a.key != b.key) {
            return a.key < b.key;
        }
        const bool goesOn = (a.key & 0xFF) != 0;
        return goesOn && std::strcmp(a.text + compared, b.text + compared) < 0;
    });
}

}  // namespace

void NameList::add(const char* name, std::size_t length) {
    starts_.push_back(bytes_.size());
    bytes_.append(name, length).push_back('\0');
}

void NameList::sortInto(std::vector<String>& names) const {
    std::vector<Item> items;
    items.reserve(names.size() + starts_.size());
    for (const String& name : names) {
        items.push_back({0, name.CStr(), &name});
    }
    for (const std::size_t start : starts_) {
        items.push_back({0, bytes_.data() + start, nullptr});
    }
    sort(items);

    std::vector<String> sorted;
    sorted.reserve(items.size());
    for (const Item& item : items) {
        if (item.existing != nullptr) {
            sorted.push_back(*item.existing);
        } else {
            sorted.emplace_back(item.text);
        }
    }
    names.swap(sorted);
}

}  // namespace Util
