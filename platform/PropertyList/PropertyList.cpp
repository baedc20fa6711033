#include "platform/PropertyList/PropertyList.h"

#include <utility>

#include "platform/PropertyList/Reading.h"

namespace cv::plist {

namespace {

constexpr std::string_view BINARY_MAGIC = "bplist";
constexpr std::string_view BINARY_VERSION = "00";
constexpr const char* TOO_LARGE = "it is too large";

/// What malloc takes for a block of `size` bytes.
std::size_t taken(std::size_t size) {
    constexpr std::size_t ALIGNMENT = 16;
    return size == 0 ? 0 : (size + sizeof(std::size_t) + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
}

/// A Mac also reads the older form, whose dictionaries are in braces and whose arrays are in parentheses.
void refuseOldForm(std::string_view bytes) {
    const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
    if (begin != std::string_view::npos && (bytes[begin] == '{' || bytes[begin] == '(')) {
        refuseUnsupported("it is in the old form of property lists");
    }
}

Value read(std::string_view bytes) {
    if (bytes.size() > MAX_FILE_SIZE) {
        refuseUnsupported(TOO_LARGE);
    }
    if (bytes.substr(0, BINARY_MAGIC.size()) != BINARY_MAGIC) {
        refuseOldForm(bytes);
        return readXml(bytes);
    }
    const std::string_view version = bytes.substr(BINARY_MAGIC.size(), BINARY_VERSION.size());
    if (version.size() == BINARY_VERSION.size() && version != BINARY_VERSION) {
        refuseUnsupported("it is a binary property list of another version");
    }
    return readBinary(bytes);
}

}  // namespace

void refuseMalformed(const char* reason) {
    throw Refusal{Parsed::Verdict::Malformed, reason};
}

void refuseUnsupported(const char* reason) {
    throw Refusal{Parsed::Verdict::Unsupported, reason};
}

void Budget::addValue() {
    if (++values_ > MAX_VALUES) {
        refuseUnsupported(TOO_LARGE);
    }
}

void Budget::spend(std::size_t size) {
    if (size > left_ || taken(size) > left_) {
        refuseUnsupported(TOO_LARGE);
    }
    left_ -= taken(size);
}

void Budget::giveBack(std::size_t size) {
    left_ += taken(size);
}

void Budget::addEntry(Dictionary& dictionary, std::string&& key, Value&& value) {
    constexpr std::size_t NODE_LINKS = 4 * sizeof(void*);
    addValue();
    spend(NODE_LINKS + sizeof(Dictionary::value_type));
    const std::size_t before = dictionary.size();
    dictionary.try_emplace(dictionary.end(), std::move(key), std::move(value));
    if (dictionary.size() == before) {
        refuseUnsupported("a dictionary in it has the same key twice");
    }
}

Parsed parse(std::string_view bytes) {
    try {
        return {read(bytes), Parsed::Verdict::Good, {}};
    } catch (Refusal& refusal) {
        return {std::nullopt, refusal.verdict, std::move(refusal.reason)};
    }
}

}  // namespace cv::plist
