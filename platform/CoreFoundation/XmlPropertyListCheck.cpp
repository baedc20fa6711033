#include <unicode/utf8.h>

#include <cstdlib>
#include <string>

#include "platform/CoreFoundation/PropertyListCheck.h"

namespace cv::plist {

namespace {

using Fault = Parsed::Fault;

constexpr Verdict DAMAGED{Fault::malformed, "its XML is damaged"};

/// Whether the text has a character reference like &#xD800;, which no XML may have and which libplist turns into bytes
/// that are no UTF-8.
bool hasSurrogateReference(std::string_view text) {
    for (std::size_t at = text.find("&#"); at != std::string_view::npos; at = text.find("&#", at + 1)) {
        const std::string reference(text.substr(at + 2, 8));
        const bool isHexadecimal = reference[0] == 'x' || reference[0] == 'X';
        const unsigned long value = isHexadecimal ? std::strtoul(reference.c_str() + 1, nullptr, 16)
                                                  : std::strtoul(reference.c_str(), nullptr, 10);
        if (U_IS_SURROGATE(value)) {
            return true;
        }
    }
    return false;
}

/// Walks the mark-up by libplist's rules, which differ from XML's in quoting, so that both see the same elements.
class XmlCheck {
public:
    explicit XmlCheck(std::string_view bytes) : bytes_(bytes) {}

    Verdict run() {
        for (;;) {
            const std::size_t text = position_;
            position_ = bytes_.find('<', position_);
            if (position_ == std::string_view::npos) {
                return {};
            }
            if (hasSurrogateReference(bytes_.substr(text, position_ - text))) {
                return DAMAGED;
            }
            ++position_;
            if (!skipMarkUp()) {
                return DAMAGED;
            }
            if (depth_ > static_cast<long>(MAX_DEPTH)) {
                return {Fault::unsupported, "it is nested too deeply"};
            }
        }
    }

private:
    bool startsWith(std::string_view text) const { return bytes_.substr(position_, text.size()) == text; }

    bool skipPast(std::string_view end) {
        position_ = bytes_.find(end, position_);
        if (position_ == std::string_view::npos) {
            return false;
        }
        position_ += end.size();
        return true;
    }

    /// Moves to the first of `stops` that is not between double quotes.
    bool findUnquoted(std::string_view stops) {
        for (; position_ < bytes_.size(); ++position_) {
            if (stops.find(bytes_[position_]) != std::string_view::npos) {
                return true;
            }
            if (bytes_[position_] == '"') {
                position_ = bytes_.find('"', position_ + 1);
                if (position_ == std::string_view::npos) {
                    return false;
                }
            }
        }
        return false;
    }

    bool skipMarkUp() {
        if (startsWith("!--")) {
            position_ += 3;
            return skipPast("-->");
        }
        if (startsWith("![CDATA[")) {
            position_ += 8;
            return skipPast("]]>");
        }
        if (startsWith("?")) {
            return skipInstruction();
        }
        return startsWith("!") ? skipDocumentType() : skipTag();
    }

    bool skipInstruction() {
        const std::size_t begin = position_;
        if (!skipPast("?>")) {
            return false;
        }
        long quotes = 0;
        for (const char c : bytes_.substr(begin, position_ - begin)) {
            quotes += c == '"';
        }
        return quotes % 2 == 0;
    }

    /// An internal subset may define entities; no property list has one.
    bool skipDocumentType() { return startsWith("!DOCTYPE") && findUnquoted("[>") && bytes_[position_] == '>'; }

    bool skipTag() {
        const std::size_t begin = position_;
        const std::size_t end = bytes_.find_first_of(" \r\n\t<>", begin);
        if (end == std::string_view::npos) {
            return false;
        }
        std::string_view name = bytes_.substr(begin, end - begin);
        position_ = end;
        if (!findUnquoted("<>") || bytes_[position_] != '>') {
            return false;
        }
        const bool isEmpty = bytes_[position_ - 1] == '/';
        if (name == "array" || name == "dict") {
            depth_ += isEmpty ? 0 : 1;
        } else if (name == "/array" || name == "/dict") {
            --depth_;
        }
        return true;
    }

    std::string_view bytes_;
    std::size_t position_ = 0;
    long depth_ = 0;
};

bool isUtf8(std::string_view bytes) {
    const auto* text = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto length = static_cast<int32_t>(bytes.size());
    for (int32_t i = 0; i < length;) {
        UChar32 character = 0;
        U8_NEXT(text, i, length, character);
        if (character <= 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

Verdict checkXml(std::string_view bytes) {
    if (!isUtf8(bytes)) {
        return {Fault::malformed, "it is not in UTF-8"};
    }
    return XmlCheck(bytes).run();
}

}  // namespace cv::plist
