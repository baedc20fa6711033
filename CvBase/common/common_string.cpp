// The text itself: construction, appending and size.

#include "CvBase/common/common_string.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "CvBase/common/string/common_string_bytes.h"

static_assert(sizeof(String) == 2 * sizeof(void*), "a String is two pointers");

String::String() = default;

String::String(std::nullptr_t) {}

namespace {

/// A text with the bytes of `s` up to its NUL; null when `s` is null.
std::string* newText(const char* s) {
    return s != nullptr ? new std::string(s) : nullptr;
}

/// The same of at most `maxLength` bytes.
std::string* newText(const char* s, unsigned int maxLength) {
    return s != nullptr ? new std::string(s, strnlen(s, maxLength)) : nullptr;
}

}  // namespace

String::String(const char* s) : text_(newText(s)) {}

String::String(const char* s, unsigned int maxLength) : text_(newText(s, maxLength)) {}

String::String(char c) : text_(new std::string(1, c)) {}

String::String(const Char& c) : String(static_cast<char>(c)) {}

String& String::operator=(const char* s) {
    text_.replace(newText(s));
    return *this;
}

String& String::Assign(const char* s, unsigned int maxLength) {
    text_.replace(newText(s, maxLength));
    return *this;
}

String String::GetPlatformLinefeed() {
    return String('\n');
}

String& String::operator+=(const String& rhs) {
    if (rhs.IsEmpty()) {
        return *this;
    }
    if (IsEmpty()) {
        return *this = rhs;
    }
    std::string joined;
    joined.reserve(text_->size() + rhs.text_->size());
    joined.append(*text_).append(*rhs.text_);
    install(std::move(joined));
    return *this;
}

String& String::operator+=(char c) {
    return *this += String(c);
}

void String::Resize(unsigned int length, bool keepUtf8Whole) {
    std::string resized(bytesOf(*this).substr(0, length));
    resized.resize(length);
    if (keepUtf8Whole) {
        blankCutSequence(resized);
    }
    install(std::move(resized));
}

void String::Truncate(unsigned int length) {
    if (Length() > length) {
        Resize(length, true);
    }
}

String::String(std::string* text) : text_(text) {}

String String::fromBytes(std::string bytes) {
    return String(new std::string(std::move(bytes)));
}

void String::install(std::string bytes) {
    text_.replace(new std::string(std::move(bytes)));
}

void String::detachAndExtend(unsigned int index) {
    std::string detached(bytesOf(*this));
    if (detached.size() <= index) {
        detached.resize(std::size_t{index} + 1);
    }
    install(std::move(detached));
}

String operator+(const String& a, const String& b) {
    String joined(a);
    joined += b;
    return joined;
}

String operator+(const String& a, const char* b) {
    return a + String(b);
}

void blankCutSequence(std::string& bytes) {
    constexpr std::size_t LONGEST_SEQUENCE = 7;
    // A lead byte before these has all of its sequence.
    const std::size_t first = bytes.size() - std::min(bytes.size(), LONGEST_SEQUENCE - 1);
    for (std::size_t i = bytes.size(); i-- > first;) {
        const unsigned char lead = static_cast<unsigned char>(bytes[i]);
        if (lead < 0xC0) {
            continue;
        }
        std::size_t length = 2;
        while (length < LONGEST_SEQUENCE && (lead & (0x80 >> length)) != 0) {
            ++length;
        }
        if (i + length > bytes.size()) {
            std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(i), bytes.end(), '\0');
        }
        return;
    }
}
