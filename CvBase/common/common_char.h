#pragma once

#pragma GCC visibility push(default)

/// The general category of each Latin-1 code point, numbered as in Category, indexed by the byte's unsigned value. The
/// soft hyphen 0xAD is a dash here.
extern const unsigned char _CHAR_CATEGORIES[256];

/// One byte of a String: an 8-bit code unit, which for ASCII and Latin-1 text is the character itself. Converts from
/// and to char freely.
class Char {
public:
    /// The categories that occur in Latin-1, by their Unicode names; the numbers between them are the other categories
    /// of Unicode.
    enum Category : unsigned char {
        DecimalDigit = 4,
        OtherNumber = 6,
        SpaceSeparator = 7,
        LineSeparator = 8,
        ParagraphSeparator = 9,
        Control = 10,
        UpperCaseLetter = 15,
        LowerCaseLetter = 16,
        ConnectorPunctuation = 20,
        DashPunctuation = 21,
        OpenPunctuation = 22,
        ClosePunctuation = 23,
        InitialQuote = 24,
        FinalQuote = 25,
        OtherPunctuation = 26,
        MathSymbol = 27,
        CurrencySymbol = 28,
        ModifierSymbol = 29,
        OtherSymbol = 30
    };

    /// The byte `c`. Not explicit, so that a char can be passed for a Char.
    constexpr Char(char c = '\0') : c_(c) {}

    /// The byte.
    constexpr operator char() const { return c_; }

    /// The byte's entry in _CHAR_CATEGORIES: a Category, or the number of another category of Unicode.
    [[nodiscard]] unsigned char GetCategory() const { return _CHAR_CATEGORIES[static_cast<unsigned char>(c_)]; }

    /// Whether the byte is 0x20, 0x09 to 0x0D, or a separator by its category. Bytes are looked at one by one: 0xA0 is
    /// white space even as the second byte of a UTF-8 sequence.
    [[nodiscard]] bool IsWhiteSpace() const {
        const unsigned char category = GetCategory();
        return (c_ >= '\t' && c_ <= '\r') || (category >= SpaceSeparator && category <= ParagraphSeparator);
    }

    /// Whether the byte is one of '0' to '9'.
    [[nodiscard]] bool IsDigit() const { return GetCategory() == DecimalDigit; }

    /// The small letter of an ASCII capital; any other byte is itself.
    [[nodiscard]] constexpr char ToLower() const { return c_ >= 'A' && c_ <= 'Z' ? static_cast<char>(c_ + 32) : c_; }

    /// The capital of a small ASCII letter; any other byte is itself.
    [[nodiscard]] constexpr char ToUpper() const { return c_ >= 'a' && c_ <= 'z' ? static_cast<char>(c_ - 32) : c_; }

private:
    char c_;
};

#pragma GCC visibility pop
