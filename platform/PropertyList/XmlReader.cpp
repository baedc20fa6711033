#include <expat.h>

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "platform/PropertyList/Reading.h"
#include "platform/PropertyList/XmlScalars.h"

namespace cv::plist {

namespace {

/// How many bytes the parser gets at once. It keeps no more than two such pieces, because no tag and no comment may be
/// longer.
constexpr std::size_t PIECE_SIZE = 1U << 20;

/// The parser tells every line and every character reference on its own; that many cost about half a second.
constexpr unsigned MAX_TEXT_PIECES = 1U << 24;

enum class Element { Plist, Dictionary, Array, Key, String, Integer, Real, True, False, Date, Data };

Element elementOf(std::string_view name) {
    static constexpr std::pair<std::string_view, Element> ELEMENTS[] = {
        {"plist", Element::Plist},   {"dict", Element::Dictionary}, {"array", Element::Array}, {"key", Element::Key},
        {"string", Element::String}, {"integer", Element::Integer}, {"real", Element::Real},   {"true", Element::True},
        {"false", Element::False},   {"date", Element::Date},       {"data", Element::Data}};
    for (const auto& [known, element] : ELEMENTS) {
        if (name == known) {
            return element;
        }
    }
    refuseMalformed("it has an element that does not belong in a property list");
}

/// Builds the value out of the elements, in the order in which the parser meets their tags and text.
class XmlTree {
public:
    void beginElement(std::string_view name, bool hasAttributes) {
        const Element element = elementOf(name);
        if (element == Element::Plist) {
            if (isInPlist_ || root_ || simple_ || !open_.empty()) {
                refuseMalformed("a <plist> in it is inside another element");
            }
            isInPlist_ = true;
            return;
        }
        if (hasAttributes) {
            refuseUnsupported("an element in it has attributes");
        }
        checkPlace(element);
        if (element == Element::Dictionary || element == Element::Array) {
            if (open_.size() == MAX_DEPTH) {
                refuseUnsupported("it is nested too deeply");
            }
            open_.push_back({element, {}, {}, std::nullopt});
        } else {
            simple_ = element;
        }
    }

    void endElement() {
        if (simple_) {
            endSimple(*std::exchange(simple_, std::nullopt));
        } else if (!open_.empty()) {
            endContainer();
        } else if (!root_) {
            refuseMalformed("it holds no value");
        }
    }

    void addText(std::string_view text) {
        if (++textPieces_ > MAX_TEXT_PIECES) {
            refuseUnsupported("it has too many lines");
        }
        if (isInText()) {
            budget_.makeRoom(text_, text.size());
            text_.append(text);
        } else if (!isWhiteSpace(text)) {
            refuseMalformed("it has text where no value is");
        }
    }

    /// Whether the text of a value is being read.
    bool isInText() const { return simple_ && *simple_ != Element::True && *simple_ != Element::False; }

    Value takeRoot() { return std::move(*root_); }

private:
    /// An array or a dictionary that has not come to its end.
    struct Container {
        Element element;
        Array items;
        Dictionary entries;
        std::optional<std::string> key;  ///< of the entry whose value comes next
    };

    void checkPlace(Element element) const {
        const bool isKey = element == Element::Key;
        const bool isInDictionary = !open_.empty() && open_.back().element == Element::Dictionary;
        if (simple_) {
            refuseMalformed("an element in it is where text should be");
        }
        if (open_.empty() && root_) {
            refuseMalformed("it holds more than one value");
        }
        if (isKey != (isInDictionary && !open_.back().key)) {
            refuseMalformed(isKey ? "a key in it is where a value should be" : "a value in it has no key");
        }
    }

    void endSimple(Element element) {
        if (element == Element::Key) {
            open_.back().key = takeText();
        } else {
            place(valueOf(element));
        }
        text_.clear();
    }

    Value valueOf(Element element) {
        switch (element) {
            case Element::Integer:
                return {integerFrom(text_)};
            case Element::Real:
                return {realFrom(text_)};
            case Element::Date:
                return {dateFrom(text_)};
            case Element::Data:
                budget_.addBytes(text_.size() / 4 * 3);
                return {Data{bytesFrom(text_)}};
            case Element::String:
                return {takeText()};
            default:
                return {element == Element::True};
        }
    }

    /// A copy of the text, which takes no more than it needs.
    std::string takeText() {
        budget_.addBytes(text_.size());
        return std::string(std::string_view(text_));
    }

    void endContainer() {
        Container done = std::move(open_.back());
        open_.pop_back();
        if (done.key) {
            refuseMalformed("a key in it has no value");
        }
        place(done.element == Element::Array ? Value{std::move(done.items)} : Value{std::move(done.entries)});
    }

    void place(Value&& value) {
        budget_.addValue();
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (Container& parent = open_.back(); parent.key) {
            budget_.addEntry(parent.entries, std::move(*parent.key), std::move(value));
            parent.key.reset();
        } else {
            budget_.makeRoom(parent.items, 1);
            parent.items.push_back(std::move(value));
        }
    }

    Budget budget_;
    std::vector<Container> open_;
    std::optional<Element> simple_;  ///< the open element, if it is not an array or dictionary
    std::string text_;               ///< of that element, so far
    unsigned textPieces_ = 0;
    std::optional<Value> root_;
    bool isInPlist_ = false;
};

/// Gives the bytes to the parser, and what it finds to the tree.
class XmlReader {
public:
    XmlReader() : parser_(XML_ParserCreate(nullptr), XML_ParserFree) {
        if (parser_ == nullptr) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), beginElement, endElement);
        XML_SetCharacterDataHandler(parser_.get(), addText);
        XML_SetStartDoctypeDeclHandler(parser_.get(), checkDocumentType);
        XML_SetSkippedEntityHandler(parser_.get(), refuseEntity);
    }

    Value read(std::string_view bytes) {
        std::size_t given = 0;
        do {
            const std::string_view piece = bytes.substr(given, PIECE_SIZE);
            given += piece.size();
            if (XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), given == bytes.size()) !=
                XML_STATUS_OK) {
                fail(bytes);
            }
            checkProgress(given);
        } while (given < bytes.size());
        return tree_.takeRoot();
    }

private:
    /// Runs `action` unless an earlier one failed. No exception can pass through the parser, so it is kept meanwhile.
    template <typename Action>
    static void guarded(void* self, Action action) {
        auto& reader = *static_cast<XmlReader*>(self);
        if (reader.failure_ != nullptr) {
            return;
        }
        try {
            action(reader.tree_);
        } catch (...) {
            reader.failure_ = std::current_exception();
            XML_StopParser(reader.parser_.get(), XML_FALSE);
        }
    }

    static void beginElement(void* self, const XML_Char* name, const XML_Char** attributes) {
        guarded(self, [=](XmlTree& tree) { tree.beginElement(name, *attributes != nullptr); });
    }

    static void endElement(void* self, const XML_Char*) {
        guarded(self, [](XmlTree& tree) { tree.endElement(); });
    }

    static void addText(void* self, const XML_Char* text, int size) {
        guarded(self, [=](XmlTree& tree) { tree.addText({text, static_cast<std::size_t>(size)}); });
    }

    static void checkDocumentType(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int hasSubset) {
        guarded(self, [=](XmlTree&) {
            if (hasSubset != 0) {
                refuseUnsupported("it declares a document type of its own");
            }
        });
    }

    static void refuseEntity(void* self, const XML_Char*, int) {
        guarded(self, [](XmlTree&) { refuseMalformed("it refers to an entity that is not defined"); });
    }

    [[noreturn]] void fail(std::string_view bytes) const {
        if (failure_ != nullptr) {
            std::rethrow_exception(failure_);
        }
        const XML_Error error = XML_GetErrorCode(parser_.get());
        if (error == XML_ERROR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        if (error == XML_ERROR_UNKNOWN_ENCODING) {
            refuseUnsupported("it is in an unknown encoding");
        }
        if (error == XML_ERROR_INVALID_TOKEN && isAtForbiddenCharacter(bytes)) {
            refuseUnsupported("it holds text with a character that XML forbids");
        }
        throw Refusal{Parsed::Verdict::Malformed, std::string("it is not an XML property list: ") +
                                                      XML_ErrorString(error) + " in line " +
                                                      std::to_string(XML_GetCurrentLineNumber(parser_.get()))};
    }

    /// No XML may have control characters, U+FFFE and U+FFFF, but other programs that write property lists let them
    /// pass.
    bool isAtForbiddenCharacter(std::string_view bytes) const {
        const XML_Index index = XML_GetCurrentByteIndex(parser_.get());
        if (!tree_.isInText() || index < 0 || static_cast<std::size_t>(index) >= bytes.size()) {
            return false;
        }
        const std::string_view rest = bytes.substr(static_cast<std::size_t>(index));
        const bool isControl = rest[0] > '\0' && rest[0] < ' ';
        return isControl || rest.substr(0, 3) == "\xEF\xBF\xBE" || rest.substr(0, 3) == "\xEF\xBF\xBF";
    }

    void checkProgress(std::size_t given) const {
        const XML_Index index = XML_GetCurrentByteIndex(parser_.get());
        if (given - static_cast<std::size_t>(std::max<XML_Index>(index, 0)) > 2 * PIECE_SIZE) {
            refuseUnsupported("a tag or a comment in it is too long");
        }
    }

    XmlTree tree_;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser_;
    std::exception_ptr failure_;
};

}  // namespace

Value readXml(std::string_view bytes) {
    return XmlReader().read(bytes);
}

}  // namespace cv::plist
